#include "tagbrowser/SNTagCloudView.h"

#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "tagbrowser/SNTagButton.h"
#include "tagbrowser/SNTagCloudViewDataSource.h"
#include "tagbrowser/SNTagCloudViewDelegate.h"
#include "tags/SNTag.h"

#include <QRectF>

#include <algorithm>
#include <cmath>

SNTagCloudView::SNTagCloudView(QWidget *parent) : QWidget(parent) { }

SNTagCloudView::~SNTagCloudView() = default;

SNTagCloudViewDataSource *SNTagCloudView::dataSource() const
{
    // A QObject source that has gone leaves nothing behind.
    return m_dataSourceIsObject && !m_dataSourceObject ? nullptr : m_dataSource;
}

void SNTagCloudView::setDataSource(SNTagCloudViewDataSource *dataSource)
{
    m_dataSource = dataSource;
    m_dataSourceObject = dynamic_cast<QObject *>(dataSource);
    m_dataSourceIsObject = m_dataSourceObject != nullptr;
}

SNTagCloudViewDelegate *SNTagCloudView::delegate() const
{
    return m_delegateIsObject && !m_delegateObject ? nullptr : m_delegate;
}

void SNTagCloudView::setDelegate(SNTagCloudViewDelegate *delegate)
{
    m_delegate = delegate;
    m_delegateObject = dynamic_cast<QObject *>(delegate);
    m_delegateIsObject = m_delegateObject != nullptr;
}

void SNTagCloudView::reloadData()
{
    resetData();
    SNTagCloudViewDataSource *source = dataSource();
    const qint64 count = source ? source->numberOfItemsInTagCloud(this) : 0;
    if (count <= 0)
        return;
    for (qint64 index = 0; index < count; ++index) {
        SNTagCloudViewDelegate *tags = delegate();
        const std::shared_ptr<SNTag> tag
            = tags ? tags->tagCloudViewTagForIndex(this, index) : nullptr;
        if (!tag)
            continue;
        std::unique_ptr<SNTagButton> made = buttonForTag(*tag);
        SNTagButton *button = made.release();
        button->setParent(this);
        button->setTagNumber(index);
        connect(button, &SNTagButton::clicked, this, [this, button] { buttonWasClicked(button); });
        m_buttonArray.append(button);
    }
    positionButtons(true);
}

void SNTagCloudView::resetData()
{
    for (SNTagButton *button : std::as_const(m_buttonArray)) {
        // Deleted later: a click on one of them may be what reloads the cloud.
        button->hide();
        button->deleteLater();
    }
    m_buttonArray.clear();
}

void SNTagCloudView::buttonWasClicked(SNTagButton *button)
{
    if (SNTagCloudViewDelegate *tags = delegate())
        tags->tagCloudViewItemWasClickedAtIndex(this, button->tagNumber());
}

QFont SNTagCloudView::tagFont()
{
    // The medium face of Helvetica Neue, or the look-alike the font table names for it.
    QFont font = QWFont(fontName(), fontSize).toQFont();
    font.setWeight(QFont::Medium);
    return font;
}

QColor SNTagCloudView::titleColorForTagColor(const QWColor &tagColor)
{
    return tagColor.qw_luminosity() >= darkTitleLuminosity ? QColor(Qt::black) : QColor(Qt::white);
}

std::unique_ptr<SNTagButton> SNTagCloudView::buttonForTag(const SNTag &tag)
{
    auto button = std::make_unique<SNTagButton>();
    button->setGeometry(0, 0, 300, buttonHeight);
    button->setCell(SNTagButtonCell(tag.tagColor()));
    button->setText(tag.name());
    button->setFont(tagFont());
    button->setTitleColor(titleColorForTagColor(tag.tagColor()));
    button->sizeToFit();
    button->resize(button->width() + buttonPadding, buttonHeight);
    return button;
}

void SNTagCloudView::positionButtons(bool resize)
{
    if (m_buttonArray.isEmpty())
        return;
    const double viewWidth = width();

    // Lines fill from the top down; a button goes onto the next line when its right edge would
    // pass the view's. Only one test: a button wider than the view stands alone on its line.
    int lineNumber = 0;
    QList<QList<SNTagButton *>> lines;
    QList<SNTagButton *> currentLine;
    QList<QRectF> frames(m_buttonArray.size());
    QRectF previousFrame;
    for (qsizetype i = 0; i < m_buttonArray.size(); ++i) {
        SNTagButton *button = m_buttonArray.at(i);
        const double w = button->width();
        const double h = button->height();
        QRectF frame(previousFrame.right() + spacing, lineNumber * lineHeight, w, h);
        previousFrame = frame;
        if (frame.right() > viewWidth) {
            ++lineNumber;
            previousFrame = QRectF();
            frame = QRectF(previousFrame.right() + spacing, lineNumber * lineHeight, w, h);
            previousFrame = frame;
            lines.append(currentLine);
            currentLine.clear();
        }
        currentLine.append(button);
        frames[i] = frame;
        button->setGeometry(frame.toRect());
        button->show();
    }
    lines.append(currentLine);

    // Centre each line by its right edge, which counts the indent before its first button, so
    // that every line sits half a spacing right of the middle.
    for (const QList<SNTagButton *> &line : std::as_const(lines)) {
        const double right
            = line.isEmpty() ? 0.0 : frames.at(m_buttonArray.indexOf(line.last())).right();
        const double shift = viewWidth / 2.0 - right / 2.0;
        for (SNTagButton *button : line) {
            const QRectF frame = frames.at(m_buttonArray.indexOf(button)).translated(shift, 0.0);
            const double left = std::floor(frame.left());
            const double top = std::floor(frame.top());
            button->setGeometry(int(left), int(top), int(std::ceil(frame.right()) - left),
                int(std::ceil(frame.bottom()) - top));
        }
    }

    if (resize)
        setGeometry(x(), y(), width(), std::max(lineHeight, (lineNumber + 1) * lineHeight));
}
