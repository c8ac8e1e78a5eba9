// kqueue and kevent as the BSD manual page kqueue(2) describes them: the
// event filters, flags and notes the process runner watches a child with.
#pragma once

#include <stdint.h>
#include <sys/types.h>
#include <time.h>

struct kevent {
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

#define EVFILT_READ (-1)
#define EVFILT_WRITE (-2)
#define EVFILT_PROC (-5)
#define EVFILT_USER (-10)

#define EV_ADD 0x0001
#define EV_DELETE 0x0002
#define EV_ENABLE 0x0004
#define EV_DISABLE 0x0008
#define EV_ONESHOT 0x0010
#define EV_CLEAR 0x0020

#define NOTE_EXIT 0x80000000u
#define NOTE_TRIGGER 0x01000000u

#define EV_SET(kevp, a, b, c, d, e, f)                                                                       \
    do {                                                                                                     \
        struct kevent* korvaneEvent = (kevp);                                                                \
        korvaneEvent->ident = (a);                                                                           \
        korvaneEvent->filter = (b);                                                                          \
        korvaneEvent->flags = (c);                                                                           \
        korvaneEvent->fflags = (d);                                                                          \
        korvaneEvent->data = (e);                                                                            \
        korvaneEvent->udata = (f);                                                                           \
    } while (0)

#ifdef __cplusplus
extern "C" {
#endif

int kqueue(void);
int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist, int nevents,
           const struct timespec* timeout);

#ifdef __cplusplus
}
#endif
