// The identifiers of script engines, which not every system library has.
#include <ole2.h>

#include <initguid.h>

#include <activscp.h>
