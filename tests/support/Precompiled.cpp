// The file that carries the precompiled header of the test programs.
#include "support/Precompiled.h"
