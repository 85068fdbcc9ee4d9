/* Compiled as each language standard a product may use, with every warning an error: the
 * header must need nothing but itself. */
#include "lumetta/product.h"

int product_header_use(void);

int product_header_use(void) {
    lumetta_event ev;
    if (lumetta_exit_event_open("Header Use", &ev) != 0) return -1;
    lumetta_event_close(&ev);
    return lumetta_updater_at_work("Header Use");
}
