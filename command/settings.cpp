#include "settings.h"

CapoSettings stickySettings;
