#include "tagbrowser/SNTagCloudViewDelegate.h"

SNTagCloudViewDelegate::~SNTagCloudViewDelegate() = default;
