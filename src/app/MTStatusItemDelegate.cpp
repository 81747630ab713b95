#include "app/MTStatusItemDelegate.h"

MTStatusItemDelegate::~MTStatusItemDelegate() = default;
