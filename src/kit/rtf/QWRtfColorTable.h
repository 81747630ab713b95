#pragma once

#include "kit/QWColor.h"

#include <QList>

#include <optional>

// The colour table of an RTF document ("\colortbl"): "\redN\greenN\blueN" and a semicolon per
// entry. An entry without components is the automatic colour, which the text's own colour
// stands for.
class QWRtfColorTable final
{
public:
    // index 0, 1, 2: red, green, blue; values are cut to 0...255.
    void setComponent(int index, int value);
    void commitColor();

    qsizetype size() const { return m_colors.size(); }
    bool contains(int index) const { return index >= 0 && index < m_colors.size(); }
    const std::optional<QWColor> &at(int index) const { return m_colors.at(index); }

private:
    QList<std::optional<QWColor>> m_colors;
    int m_components[3] = { -1, -1, -1 };
};
