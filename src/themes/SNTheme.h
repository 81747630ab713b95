#pragma once

#include "kit/QWColor.h"
#include "kit/QWFont.h"

#include <QString>

#include <memory>
#include <optional>

// The look of a note: a vertical gradient from startColor to endColor, a default font, text,
// link and cursor colours, and whether the background is dark (the note window then uses its
// light-on-dark icons). This class carries the defaults; each built-in theme is a subclass that
// only overrides some of them in its constructor. Themes draw nothing themselves.
//
// Themes are owned through std::shared_ptr: theme() of each class makes a fresh one.
class SNTheme
{
    Q_DISABLE_COPY_MOVE(SNTheme)

public:
    SNTheme();
    virtual ~SNTheme();

    static std::shared_ptr<SNTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNTheme"); }
    virtual QString className() const { return staticClassName(); }
    // The key under which a note stores its theme: the class name, for every built-in theme.
    virtual QString saveName() const { return className(); }
    // What defaultFont() answers when no font is stored: "Helvetica Neue" 14.
    virtual QWFont fallbackFont() const;

    // Unique among all themes; shown in menus and the editor. A null string only for a user
    // theme read from a file that had no name, which saving then leaves out; setName() always
    // stores a string, empty or not.
    const QString &name() const { return m_name; }
    void setName(const QString &name);
    bool hasName() const { return !m_name.isNull(); }

    const QWColor &startColor() const { return m_startColor; }
    virtual void setStartColor(const QWColor &color);
    const QWColor &endColor() const { return m_endColor; }
    void setEndColor(const QWColor &color) { m_endColor = color; }

    // The stored font, or the fallback font when none is stored (the named font was not
    // installed when the theme was made). The fallback is answered even when it is not installed
    // either: it is the font the theme means, and drawing substitutes a look-alike.
    QWFont defaultFont() const;
    const std::optional<QWFont> &storedDefaultFont() const { return m_defaultFont; }
    void setDefaultFont(const std::optional<QWFont> &font) { m_defaultFont = font; }

    const QWColor &defaultFontColor() const { return m_defaultFontColor; }
    void setDefaultFontColor(const QWColor &color) { m_defaultFontColor = color; }
    const QWColor &linkColor() const { return m_linkColor; }
    void setLinkColor(const QWColor &color) { m_linkColor = color; }
    const QWColor &cursorColor() const { return m_cursorColor; }
    void setCursorColor(const QWColor &color) { m_cursorColor = color; }

    bool isDark() const { return m_isDark; }
    void setIsDark(bool isDark) { m_isDark = isDark; }
    // Only user themes may be changed and deleted by the user.
    bool isEditable() const { return m_editable; }
    void setEditable(bool editable) { m_editable = editable; }

protected:
    // For decoding a user theme whose file gives no name.
    void removeName() { m_name = QString(); }

private:
    QString m_name;
    QWColor m_startColor;
    QWColor m_endColor;
    std::optional<QWFont> m_defaultFont;
    QWColor m_defaultFontColor;
    QWColor m_linkColor;
    QWColor m_cursorColor;
    bool m_isDark = false;
    bool m_editable = false;
};
