#include "themes/SNThemeManager.h"

#include "kit/QWClock.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "kit/QWNotificationCenter.h"
#include "themes/SNDarkTheme.h"
#include "themes/SNEnglishTheme.h"
#include "themes/SNHackerTheme.h"
#include "themes/SNPlainTextDarkTheme.h"
#include "themes/SNPlainTextTheme.h"
#include "themes/SNPresentationTheme.h"
#include "themes/SNUserTheme.h"
#include "themes/SNYellowPadTheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

SNThemeManager &SNThemeManager::sharedManager()
{
    static SNThemeManager manager(defaultUserThemeDirectory());
    return manager;
}

QString SNThemeManager::defaultUserThemeDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/Vellumo/User Themes/");
}

SNThemeManager::SNThemeManager(const QString &userThemeDirectory)
    : m_bundledThemes { SNYellowPadTheme::theme(), SNPlainTextTheme::theme(),
          SNPlainTextDarkTheme::theme(), SNDarkTheme::theme(), SNEnglishTheme::theme(),
          SNHackerTheme::theme(), SNPresentationTheme::theme() },
      m_userThemeDirectory(userThemeDirectory)
{
    if (!m_userThemeDirectory.endsWith(QLatin1Char('/')))
        m_userThemeDirectory += QLatin1Char('/');
    loadUserThemes();
    update();
}

SNThemeManager::~SNThemeManager() = default;

void SNThemeManager::addTheme(const std::shared_ptr<SNUserTheme> &theme)
{
    m_mutableThemesArray.append(theme);
    setUserThemes(m_mutableThemesArray);
}

void SNThemeManager::removeTheme(const std::shared_ptr<SNUserTheme> &theme)
{
    m_mutableThemesArray.removeAll(theme);
    setUserThemes(m_mutableThemesArray);
}

void SNThemeManager::updateThemes(const UserThemeList &themes)
{
    m_mutableThemesArray = themes;
    setUserThemes(m_mutableThemesArray);
}

void SNThemeManager::setUserThemes(const UserThemeList &themes)
{
    m_userThemes = themes;
    update();
}

void SNThemeManager::update()
{
    m_themes = m_bundledThemes;
    for (const std::shared_ptr<SNUserTheme> &theme : userThemes())
        m_themes.append(theme);
}

std::shared_ptr<SNUserTheme> SNThemeManager::userThemeWithName(const QString &name) const
{
    for (const std::shared_ptr<SNUserTheme> &theme : userThemes()) {
        if (theme->name() == name)
            return theme;
    }
    return nullptr;
}

void SNThemeManager::loadUserThemes()
{
    const QString path = themesFilePath();
    QFile file(path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        setAsideUnreadableFile(file.errorString());
        return;
    }
    const QByteArray bytes = file.readAll();
    file.close();
    if (bytes.isEmpty())
        return;

    const Contents contents = contentsOfData(bytes);
    if (!contents.problem.isEmpty())
        setAsideUnreadableFile(contents.problem);
    if (contents.themes)
        updateThemes(*contents.themes);
}

SNThemeManager::Contents SNThemeManager::contentsOfData(const QByteArray &data)
{
    SNUserTheme::registerWithUnarchiver();
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(data);
    Contents contents;
    contents.problem = result.error;
    if (!result.root.isArray()) {
        if (contents.problem.isEmpty())
            contents.problem = QStringLiteral("not a list of themes");
        return contents;
    }
    contents.themes
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNUserTheme>>(result.root);
    // Entries that are not themes would be gone after the next save: that is damage too.
    const qsizetype unread = qsizetype(result.root.toArray().size()) - contents.themes->size();
    if (contents.problem.isEmpty() && unread > 0)
        contents.problem = QStringLiteral("%1 entries are not themes").arg(unread);
    return contents;
}

void SNThemeManager::setAsideUnreadableFile(const QString &reason)
{
    const QString path = themesFilePath();
    const QString stem = path + QStringLiteral(".damaged-")
        + QWClock::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = stem;
    for (int attempt = 2; QFileInfo::exists(aside); ++attempt)
        aside = stem + QStringLiteral("-%1").arg(attempt);
    if (QFile::rename(path, aside)) {
        m_movedAsidePath = aside;
        qWarning("[DEBUG] Could not read %s (%s); moved it to %s", qUtf8Printable(path),
            qUtf8Printable(reason), qUtf8Printable(aside));
    } else {
        m_writeRefused = true;
        qWarning("[DEBUG] Could not read %s (%s) nor move it aside; it will not be overwritten",
            qUtf8Printable(path), qUtf8Printable(reason));
    }
}

void SNThemeManager::save()
{
    if (!m_userThemes)
        return;
    QDir().mkpath(m_userThemeDirectory);

    UserThemeList named;
    for (const std::shared_ptr<SNUserTheme> &theme : *m_userThemes) {
        if (theme->hasName())
            named.append(theme);
    }
    if (m_writeRefused) {
        qWarning("[DEBUG] Did not save the user themes over the unreadable %s",
            qUtf8Printable(themesFilePath()));
    } else {
        QSaveFile file(themesFilePath());
        const QByteArray archive = QWKeyedArchiver::archivedDataWithRootObject(named);
        if (!file.open(QIODevice::WriteOnly) || file.write(archive) != archive.size()
            || !file.commit())
            qWarning(
                "[DEBUG] Could not save the user themes: %s", qUtf8Printable(file.errorString()));
    }
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        styleDidChangeNotificationName(), this);
}
