// The same for files of Windows: the system's headers are large.
#pragma once

#include "Precompiled.h"

#include "controls/win32/Windows.h"

#include <commctrl.h>
#include <ocidl.h>
#include <ole2.h>
#include <olectl.h>
