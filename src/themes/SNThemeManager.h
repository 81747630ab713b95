#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class SNTheme;
class SNUserTheme;

// The registry of themes: the seven built-in ones in a fixed order, then the user's own,
// which live in "Themes.db" in userThemeDirectory(). Used on the main thread only; only the
// creation of the shared instance is guarded.
//
// A Themes.db that cannot be read whole is renamed aside ("Themes.db.damaged-<time>") before
// anything could write over it, and whatever it still held is kept.
class SNThemeManager final
{
    Q_DISABLE_COPY_MOVE(SNThemeManager)

public:
    using ThemeList = QList<std::shared_ptr<SNTheme>>;
    using UserThemeList = QList<std::shared_ptr<SNUserTheme>>;

    static QString styleDidChangeNotificationName()
    {
        return QStringLiteral("SNThemeStyleDidChange");
    }
    static QString themesFileName() { return QStringLiteral("Themes.db"); }

    // The registry over the user's folder, created on first use.
    static SNThemeManager &sharedManager();
    // "<XDG data folder>/Vellumo/User Themes/".
    static QString defaultUserThemeDirectory();

    // A registry over any folder (tests use their own); loads the user themes at once.
    explicit SNThemeManager(const QString &userThemeDirectory);
    ~SNThemeManager();

    const ThemeList &bundledThemes() const { return m_bundledThemes; }
    // Empty until user themes are loaded or changed.
    UserThemeList userThemes() const { return m_userThemes.value_or(UserThemeList()); }
    const UserThemeList &mutableThemesArray() const { return m_mutableThemesArray; }
    // bundledThemes() followed by userThemes().
    const ThemeList &themes() const { return m_themes; }
    const QString &userThemeDirectory() const { return m_userThemeDirectory; }
    QString themesFilePath() const { return m_userThemeDirectory + themesFileName(); }

    void addTheme(const std::shared_ptr<SNUserTheme> &theme);
    // Removes every entry that is this very theme.
    void removeTheme(const std::shared_ptr<SNUserTheme> &theme);
    void updateThemes(const UserThemeList &themes);
    void update();

    // The first user theme with exactly this name; built-in themes are never found this way.
    std::shared_ptr<SNUserTheme> userThemeWithName(const QString &name) const;

    // What the bytes of a Themes.db hold: the user themes (none when the root is not a list) and,
    // when not everything could be read, why not.
    struct Contents
    {
        std::optional<UserThemeList> themes;
        QString problem;
    };
    static Contents contentsOfData(const QByteArray &data);

    void loadUserThemes();
    // Writes the user themes into Themes.db atomically, then announces
    // styleDidChangeNotificationName(). Does nothing before the user themes were ever set;
    // themes without a name are left out.
    void save();
    // Kept for callers that still send it; loading happens on creation.
    void load() { }

    // Where an unreadable Themes.db was moved to; empty when none was.
    const QString &movedAsidePath() const { return m_movedAsidePath; }

private:
    void setUserThemes(const UserThemeList &themes);
    void setAsideUnreadableFile(const QString &reason);

    ThemeList m_bundledThemes;
    // Unset (as opposed to empty) until loaded or changed: save() then has nothing to write.
    std::optional<UserThemeList> m_userThemes;
    UserThemeList m_mutableThemesArray;
    ThemeList m_themes;
    QString m_userThemeDirectory;
    QString m_movedAsidePath;
    // Set when an unreadable Themes.db could not be moved aside: it is never overwritten.
    bool m_writeRefused = false;
};
