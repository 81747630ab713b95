#pragma once

#include <QtGlobal>

class SNTagCloudView;

// Tells a tag cloud how many items it shows.
class SNTagCloudViewDataSource
{
public:
    virtual ~SNTagCloudViewDataSource();

    virtual qint64 numberOfItemsInTagCloud(SNTagCloudView *view) = 0;

protected:
    SNTagCloudViewDataSource() = default;
    SNTagCloudViewDataSource(const SNTagCloudViewDataSource &) = default;
    SNTagCloudViewDataSource &operator=(const SNTagCloudViewDataSource &) = default;
};
