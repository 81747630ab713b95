#include "tagbrowser/SNTagCloudViewDataSource.h"

SNTagCloudViewDataSource::~SNTagCloudViewDataSource() = default;
