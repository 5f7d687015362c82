// SPDX-License-Identifier: MIT
//
// The framework's extensions; this program needs none of them.
#pragma once

#include "afxwin.h"
