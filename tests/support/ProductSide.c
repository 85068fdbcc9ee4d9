/* A product's side of the named objects, written only against include/lumetta/product.h.
 *   lumetta_test_product wait-event NAME TIMEOUT_MS  exit 0 signalled, 1 timed out
 *   lumetta_test_product wait-exit PRODUCT TIMEOUT_MS  the same on PRODUCT's exit event
 *   lumetta_test_product mutex-held NAME             exit 0 held, 1 not held
 *   lumetta_test_product updater-at-work PRODUCT     exit 0 at work, 1 not
 * Exit 2 on usage errors, 3 on system errors. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "lumetta/product.h"

static int wait_on(lumetta_event* ev, int opened, const char* timeout) {
    int result;
    if (opened != 0) {
        fprintf(stderr, "open failed: %s\n", strerror(opened));
        return 3;
    }
    result = lumetta_event_wait(ev, atol(timeout));
    lumetta_event_close(ev);
    return result == 1 ? 0 : result == 0 ? 1 : 3;
}

int main(int argc, char** argv) {
    lumetta_event ev;
    int held;
    if (argc == 4 && strcmp(argv[1], "wait-event") == 0)
        return wait_on(&ev, lumetta_event_open(argv[2], &ev), argv[3]);
    if (argc == 4 && strcmp(argv[1], "wait-exit") == 0)
        return wait_on(&ev, lumetta_exit_event_open(argv[2], &ev), argv[3]);
    if (argc == 3 && strcmp(argv[1], "mutex-held") == 0) {
        held = lumetta_mutex_held(argv[2]);
        return held == 1 ? 0 : held == 0 ? 1 : 3;
    }
    if (argc == 3 && strcmp(argv[1], "updater-at-work") == 0) {
        held = lumetta_updater_at_work(argv[2]);
        return held == 1 ? 0 : held == 0 ? 1 : 3;
    }
    fprintf(stderr, "usage: %s wait-event|wait-exit|mutex-held|updater-at-work NAME [MS]\n",
            argv[0]);
    return 2;
}
