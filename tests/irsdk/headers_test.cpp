// Compiling this is the test: the headers of the link, before anything else could have included a
// header of the platform.
#include "irsdk/allocation.h"
#include "irsdk/blockmemory.h"
#include "irsdk/clock.h"
#include "irsdk/irsdk.h"
#include "irsdk/layout.h"
#include "irsdk/platform.h"

#if defined(min) || defined(max)
#error "a header of the link leaks the macros min and max"
#endif
#if defined(_WINDOWS_) || defined(_INC_WINDOWS)
#error "a header of the link leaks the platform's headers"
#endif
