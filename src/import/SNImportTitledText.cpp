#include "import/SNImportTitledText.h"

QWAttributedString SNImportTitledText::make(const QString &title, const QWAttributedString &text)
{
    qsizetype end = text.length();
    while (end > 0 && text.string().at(end - 1).isSpace())
        --end;
    const QWAttributedString trimmed = text.attributedSubstringFromRange(0, end);
    const QString cleanTitle = title.simplified();
    if (cleanTitle.isEmpty() || trimmed.string().section(u'\n', 0, 0).trimmed() == cleanTitle)
        return trimmed;
    QWMutableAttributedString titled;
    titled.appendString(trimmed.isEmpty() ? cleanTitle : cleanTitle + u'\n');
    titled.appendAttributedString(trimmed);
    return titled.attributedString();
}
