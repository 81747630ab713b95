#include "kit/rtf/QWRtfColorTable.h"

#include <algorithm>
#include <iterator>

void QWRtfColorTable::setComponent(int index, int value)
{
    if (index >= 0 && index < 3)
        m_components[index] = std::clamp(value, 0, 255);
}

void QWRtfColorTable::commitColor()
{
    const bool isAuto = m_components[0] < 0 && m_components[1] < 0 && m_components[2] < 0;
    std::optional<QWColor> color;
    if (!isAuto) {
        const auto component
            = [this](int index) { return std::max(m_components[index], 0) / 255.0; };
        color = QWColor(component(0), component(1), component(2));
    }
    m_colors.append(color);
    std::fill(std::begin(m_components), std::end(m_components), -1);
}
