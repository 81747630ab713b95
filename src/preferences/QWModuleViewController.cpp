#include "preferences/QWModuleViewController.h"

QWModuleViewController::QWModuleViewController(QObject *parent) : QWViewController(parent) { }

QWModuleViewController::~QWModuleViewController() = default;
