#pragma once

#include <QFont>
#include <QString>
#include <QStringList>

#include <optional>

class QWKeyedArchiver;
class QWKeyedUnarchiver;

// A font as themes and archives name it: family, point size and the two traits that text
// formatting toggles. The family is kept as written ("Helvetica Neue") whether or not this
// machine has it.
class QWFont final
{
public:
    QWFont() = default;
    QWFont(QString family, double pointSize, bool bold = false, bool italic = false);

    // The font of that family and size when it can be drawn (isFamilyAvailable), else nothing
    // (the caller falls back).
    static std::optional<QWFont> fontWithNameSize(const QString &family, double pointSize);
    // True when the font database knows the family. Needs a QGuiApplication.
    static bool isFamilyInstalled(const QString &family);
    // True when the family or one of its look-alikes is installed: then text in it is drawn
    // as its designer meant (monospaced, serif, sans), so a theme keeps its font.
    static bool isFamilyAvailable(const QString &family);
    bool isInstalled() const { return isFamilyInstalled(m_family); }

    const QString &family() const { return m_family; }
    double pointSize() const { return m_pointSize; }
    bool isBold() const { return m_bold; }
    bool isItalic() const { return m_italic; }

    QWFont withBold(bool bold) const;
    QWFont withItalic(bool italic) const;
    QWFont withPointSize(double pointSize) const;

    // Fonts the themes name that a Linux desktop rarely has, and the installed look-alikes that
    // drawing uses instead, best first. Empty for any other family.
    static QStringList substitutesForFamily(const QString &family);
    // The family drawing uses for a named one: itself when installed, else its first installed
    // look-alike, else the name as given (Qt's own fallback then decides).
    static QString substitutedFamily(const QString &family);

    // Keeps the named family first, so family() still reads "Menlo" and text taken back from an
    // editor keeps the theme's font name; Qt draws with the first listed family it has.
    QFont toQFont() const;
    QString description() const;

    static QString className() { return QStringLiteral("QWFont"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::optional<QWFont> initWithCoder(const QWKeyedUnarchiver &coder);

    friend bool operator==(const QWFont &, const QWFont &) = default;

private:
    QString m_family;
    double m_pointSize = 0.0;
    bool m_bold = false;
    bool m_italic = false;
};
