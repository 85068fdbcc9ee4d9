// Holds the named mutex argv[1] until it is killed.
#include <unistd.h>

#include "platform/NamedMutex.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    Platform::NamedMutex mutex;
    if (mutex.Create(argv[1]) != 0) return 3;
    for (;;) ::pause();
}
