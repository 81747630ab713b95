#include "app/QWWindowManager.h"
