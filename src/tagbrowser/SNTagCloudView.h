#pragma once

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

class QWColor;
class SNTag;
class SNTagButton;
class SNTagCloudViewDataSource;
class SNTagCloudViewDelegate;

// Shows tags as a cloud: one small rounded button per tag, in the tag's colour and titled with
// its name, laid out in centred lines from the top, the view as high as its lines. The data
// source says how many items there are, the delegate gives the tag of each and hears clicks.
class SNTagCloudView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTagCloudView)

public:
    static constexpr int spacing = 10;
    static constexpr int lineHeight = 30;
    static constexpr int buttonHeight = 24;
    // Added to the width that fits the title.
    static constexpr int buttonPadding = 10;
    static constexpr double fontSize = 13.0;
    static QString fontName() { return QStringLiteral("HelveticaNeue-Medium"); }
    // Titles on colours at least this light are black, else white.
    static constexpr double darkTitleLuminosity = 0.5;

    explicit SNTagCloudView(QWidget *parent = nullptr);
    ~SNTagCloudView() override;

    // Both held weakly: when they are QObjects, their destruction clears them here.
    SNTagCloudViewDataSource *dataSource() const;
    void setDataSource(SNTagCloudViewDataSource *dataSource);
    SNTagCloudViewDelegate *delegate() const;
    void setDelegate(SNTagCloudViewDelegate *delegate);

    // The buttons shown, in index order.
    const QList<SNTagButton *> &buttonArray() const { return m_buttonArray; }

    void reloadData();
    void resetData();
    void buttonWasClicked(SNTagButton *button);
    static std::unique_ptr<SNTagButton> buttonForTag(const SNTag &tag);
    // Lays the buttons out in lines; with resize set, the view takes the height of its lines.
    void positionButtons(bool resize);

    static QColor titleColorForTagColor(const QWColor &tagColor);
    static QFont tagFont();

private:
    SNTagCloudViewDataSource *m_dataSource = nullptr;
    QPointer<QObject> m_dataSourceObject;
    bool m_dataSourceIsObject = false;
    SNTagCloudViewDelegate *m_delegate = nullptr;
    QPointer<QObject> m_delegateObject;
    bool m_delegateIsObject = false;
    QList<SNTagButton *> m_buttonArray;
};
