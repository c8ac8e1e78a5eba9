// The Mach names the IOKit calls take, declared from Apple's Kernel and IOKit
// documentation: a port is a 32-bit name, a call answers a kern_return_t.
#pragma once

#include <stdint.h>

typedef unsigned int natural_t;
typedef natural_t mach_port_t;
typedef int kern_return_t;

#define MACH_PORT_NULL ((mach_port_t)0)
#define KERN_SUCCESS 0
