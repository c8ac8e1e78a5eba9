// Not Apple's: the host C library's word size, said for every 64-bit target.
// The check borrows this machine's C library headers, which know an arm64
// build only as a 32-bit x86 one; both Mac architectures are LP64.
#define __WORDSIZE 64
#define __WORDSIZE_TIME64_COMPAT32 1
#define __SYSCALL_WORDSIZE 64
