#pragma once

#include <QFont>
#include <QString>

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

    // The font of that family and size when it is installed, else nothing (the caller falls back).
    static std::optional<QWFont> fontWithNameSize(const QString &family, double pointSize);
    // True when the font database knows the family. Needs a QGuiApplication.
    static bool isFamilyInstalled(const QString &family);
    bool isInstalled() const { return isFamilyInstalled(m_family); }

    const QString &family() const { return m_family; }
    double pointSize() const { return m_pointSize; }
    bool isBold() const { return m_bold; }
    bool isItalic() const { return m_italic; }

    QWFont withBold(bool bold) const;
    QWFont withItalic(bool italic) const;
    QWFont withPointSize(double pointSize) const;

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
