#pragma once

// What the tray icon asks of the application: what a left click does, and whether its menu
// may open now.
class MTStatusItemDelegate
{
public:
    virtual ~MTStatusItemDelegate();

    virtual void menuIconWasClicked() = 0;
    virtual bool menuShouldShow() = 0;
};
