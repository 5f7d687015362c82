// SPDX-License-Identifier: MIT
#include "region/region.h"
