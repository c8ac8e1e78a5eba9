// Not Apple's: the host C library's list of functions it lacks, the 64-bit
// one whichever 64-bit target asks (see bits/wordsize.h beside this).
#include <gnu/stubs-64.h>
