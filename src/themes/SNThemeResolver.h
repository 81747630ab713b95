#pragma once

#include <QString>

#include <memory>

class SNTheme;
class SNThemeManager;

// Turns the theme name a note stores into a theme. Built-in kinds are found by class name and
// made fresh for each call, so every note holds an instance of its own; "SNUserTheme-<name>"
// asks the registry, which hands out its one shared object. Whatever names no theme gives a
// new yellow pad.
class SNThemeResolver final
{
public:
    SNThemeResolver() = delete;

    // What an empty stored name stands for: the defaultThemeName setting, or "SNYellowPadTheme"
    // when that is empty too.
    static QString defaultSaveName();
    // The stored name itself, or defaultSaveName() when it is empty.
    static QString saveNameOrDefault(const QString &storedName);

    // Never null. The registry is SNThemeManager::sharedManager() unless one is given.
    static std::shared_ptr<SNTheme> themeWithSaveName(const QString &saveName);
    static std::shared_ptr<SNTheme> themeWithSaveName(
        const QString &saveName, const SNThemeManager &manager);
};
