#include "foreignplugin.h"
