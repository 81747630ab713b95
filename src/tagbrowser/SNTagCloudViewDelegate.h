#pragma once

#include <QtGlobal>

#include <memory>

class SNTag;
class SNTagCloudView;

// Supplies the tag of each item of a tag cloud and hears which one was clicked.
class SNTagCloudViewDelegate
{
public:
    virtual ~SNTagCloudViewDelegate();

    // Null leaves the index out of the cloud.
    virtual std::shared_ptr<SNTag> tagCloudViewTagForIndex(SNTagCloudView *view, qint64 index) = 0;
    virtual void tagCloudViewItemWasClickedAtIndex(SNTagCloudView *view, qint64 index) = 0;

protected:
    SNTagCloudViewDelegate() = default;
    SNTagCloudViewDelegate(const SNTagCloudViewDelegate &) = default;
    SNTagCloudViewDelegate &operator=(const SNTagCloudViewDelegate &) = default;
};
