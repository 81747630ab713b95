#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class SNTheme;

// The theme kinds a note can name, by class name. It holds nothing but theme classes, so a
// stored name that is some other class ("NSObject") is as unknown here as a misspelt one.
class SNThemeKindRegistry final
{
public:
    SNThemeKindRegistry() = delete;

    // A fresh theme of the kind with this class name, or nullptr when no theme kind has it.
    static std::shared_ptr<SNTheme> themeWithClassName(const QString &className);
    static bool isThemeKind(const QString &className);
    static QStringList classNames();
};
