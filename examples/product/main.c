/* example-product: the least a product does to work with the Lumetta Updater.
 *
 *   example-product [NAME]     runs until the updater asks it to exit (NAME: the product
 *                              name the updater is started with, default "Example Product")
 *   example-product --update [NAME]
 *                              starts the updater for this product and exits, so that the
 *                              updater finds no running copy to close
 *
 * The updater reads this program's version from the version resource that
 * lumetta_add_version_resource() gave it (see CMakeLists.txt).
 */
#include "lumetta/product.h"

#include <spawn.h>

extern char** environ;

static const char* const kUpdater = "/usr/bin/lumetta-updater";

/* The updater's command line: the product it serves, the executable it reads the version
 * from and closes, and where the new setup comes from (without /downloadURL: the registry
 * value "DownloadURL" or the updater's built-in address). */
static int start_updater(const char* name, const char* exe) {
    char* argv[] = {(char*)kUpdater, (char*)"/productName",
                    (char*)name,     (char*)"/productExecutable",
                    (char*)exe,      NULL};
    pid_t pid;
    int error = posix_spawn(&pid, kUpdater, NULL, NULL, argv, environ);
    if (error != 0)
        fprintf(stderr, "example-product: cannot start %s: %s\n", kUpdater, strerror(error));
    return error == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
    const char* exe = strrchr(argv[0], '/') ? strrchr(argv[0], '/') + 1 : argv[0];
    lumetta_event exit_event;
    int error;
    if (argc > 1 && strcmp(argv[1], "--update") == 0)
        return start_updater(argc > 2 ? argv[2] : "Example Product", exe);

    const char* name = argc > 1 ? argv[1] : "Example Product";
    if (lumetta_updater_at_work(name) == 1) {
        fprintf(stderr, "example-product: %s is being updated; try again later\n", name);
        return 1;
    }
    error = lumetta_exit_event_open(name, &exit_event);
    if (error != 0) {
        fprintf(stderr, "example-product: no exit event: %s\n", strerror(error));
        return 1;
    }
    printf("%s is running (pid %ld) and waits for its exit event\n", name, (long)getpid());
    fflush(stdout);
    /* A real product waits in a thread of its own and goes on working meanwhile. */
    if (lumetta_event_wait(&exit_event, -1) == 1) {
        printf("%s was asked to exit by the updater\n", name);
        fflush(stdout);
    }
    lumetta_event_close(&exit_event);
    return 0;
}
