/* lumetta/product.h: what a product needs to cooperate with the Lumetta Updater.
 *
 * The updater and the product share three named objects, named after the product name the
 * updater is configured with (UTF-8):
 *   name + "_UpdateMutex"  held by an updater that is updating the product;
 *   name + "_ExtrasMutex"  held by an updater that runs beside the product;
 *   name + "_ExitEvent"    set by the updater when the product has to exit.
 *
 * A product opens its exit event once at start-up and waits on it (typically in a thread of
 * its own); when the wait reports a signal, it saves its work and exits within 2 seconds,
 * after which the updater ends it. It may ask at any time whether an updater is at work.
 *
 *   lumetta_event ev;
 *   if (lumetta_exit_event_open("Lumetta Player", &ev) == 0) {
 *       if (lumetta_event_wait(&ev, -1) == 1) save_and_exit();
 *       lumetta_event_close(&ev);
 *   }
 *   if (lumetta_updater_at_work("Lumetta Player") == 1) { ... }
 *
 * Objects are private to the user: a mutex is a lock file in $XDG_RUNTIME_DIR/lumetta (or
 * /tmp/lumetta-UID when that variable names no absolute folder), held with a shared flock
 * for as long as its holder keeps it open, so it is released when the holder dies. An event
 * is a POSIX named semaphore "/lumetta-UID-NAME" that holds at most one pending signal.
 * Names pass through lumetta_object_name, which keeps them valid file names.
 *
 * Everything here is inline C (C99 or later, or C++); link with -pthread. The functions
 * that take an object or product name read $XDG_RUNTIME_DIR with getenv, so a program that
 * changes its environment from several threads must not call them concurrently with that.
 */
#ifndef LUMETTA_PRODUCT_H
#define LUMETTA_PRODUCT_H

/* lstat, flock, sem_timedwait, O_CLOEXEC and O_NOFOLLOW are POSIX and BSD interfaces that a
 * strict -std=c99 (or c11, c17) hides unless a feature-test macro asks for them, and such a
 * macro only counts when it comes before the first system header. So either include this
 * header before any other, or define _DEFAULT_SOURCE (or _GNU_SOURCE) for the whole file. */
#if !defined(_GNU_SOURCE) && !defined(_DEFAULT_SOURCE)
#define _DEFAULT_SOURCE 1
#endif

#include <errno.h>
#include <fcntl.h>
#include <semaphore.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#if defined(__GLIBC__) && !defined(__USE_MISC)
#error "lumetta/product.h: include it before any system header, or define _DEFAULT_SOURCE"
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Longest object name kept as it is (bytes). Longer names are cut and get a hash suffix. */
#define LUMETTA_OBJECT_NAME_KEEP 200
#define LUMETTA_OBJECT_NAME_CUT 160
/* Room for any name, folder or path these functions build. */
#define LUMETTA_PATH_MAX 4096

/* Writes the file-name-safe form of `name` to out (capacity at least
 * LUMETTA_OBJECT_NAME_KEEP + 1). Slashes, backslashes and control characters become '_';
 * an empty name becomes "_"; a name longer than LUMETTA_OBJECT_NAME_KEEP bytes keeps its
 * first LUMETTA_OBJECT_NAME_CUT bytes followed by '-' and 16 hex digits of a hash of the
 * whole name, so that long names stay distinct. */
static inline void lumetta_object_name(const char* name, char* out) {
    size_t length = strlen(name);
    size_t keep = length > LUMETTA_OBJECT_NAME_KEEP ? LUMETTA_OBJECT_NAME_CUT : length;
    size_t i;
    for (i = 0; i < keep; ++i) {
        unsigned char c = (unsigned char)name[i];
        out[i] = (c < 32 || c == 127 || c == '/' || c == '\\') ? '_' : (char)c;
    }
    if (length == 0) out[keep++] = '_';
    if (length > LUMETTA_OBJECT_NAME_KEEP) {
        /* 64-bit FNV-1a */
        uint64_t hash = 14695981039346656037ull;
        for (i = 0; i < length; ++i) {
            hash ^= (unsigned char)name[i];
            hash *= 1099511628211ull;
        }
        snprintf(out + keep, 18, "-%016llx", (unsigned long long)hash);
        keep += 17;
    }
    out[keep] = '\0';
}

/* The folder that holds the lock files, given the value of XDG_RUNTIME_DIR (may be null).
 * Returns 0, or ENAMETOOLONG. */
static inline int lumetta_object_folder(const char* runtimeDir, char* out, size_t capacity) {
    int n;
    if (runtimeDir != NULL && runtimeDir[0] == '/')
        n = snprintf(out, capacity, "%s/lumetta", runtimeDir);
    else
        n = snprintf(out, capacity, "/tmp/lumetta-%lu", (unsigned long)getuid());
    return (n < 0 || (size_t)n >= capacity) ? ENAMETOOLONG : 0;
}

/* Creates the folder if needed and makes sure that it is a real folder of this user that
 * nobody else can enter (a folder planted in /tmp by someone else is refused). Returns 0 or
 * an errno value. */
static inline int lumetta_prepare_object_folder(const char* folder) {
    struct stat st;
    if (mkdir(folder, 0700) != 0 && errno != EEXIST) return errno;
    if (lstat(folder, &st) != 0) return errno;
    if (!S_ISDIR(st.st_mode) || st.st_uid != getuid()) return EACCES;
    if ((st.st_mode & 077) != 0 && chmod(folder, 0700) != 0) return errno;
    return 0;
}

/* The lock file of a named mutex, given the value of XDG_RUNTIME_DIR. Returns 0 or an errno
 * value. */
static inline int lumetta_lock_file_path(const char* runtimeDir, const char* objectName, char* out,
                                         size_t capacity) {
    char safe[LUMETTA_OBJECT_NAME_KEEP + 1];
    char folder[LUMETTA_PATH_MAX];
    int n, error = lumetta_object_folder(runtimeDir, folder, sizeof folder);
    if (error != 0) return error;
    lumetta_object_name(objectName, safe);
    n = snprintf(out, capacity, "%s/%s.lock", folder, safe);
    return (n < 0 || (size_t)n >= capacity) ? ENAMETOOLONG : 0;
}

/* The semaphore name of a named event. Returns 0 or ENAMETOOLONG. */
static inline int lumetta_semaphore_name(const char* objectName, char* out, size_t capacity) {
    char safe[LUMETTA_OBJECT_NAME_KEEP + 1];
    int n;
    lumetta_object_name(objectName, safe);
    n = snprintf(out, capacity, "/lumetta-%lu-%s", (unsigned long)getuid(), safe);
    return (n < 0 || (size_t)n >= capacity) ? ENAMETOOLONG : 0;
}

/* Whether a process (this one included) holds the named mutex: 1 held, 0 not held (also
 * when nobody ever created it), -1 on an error (errno tells which). */
static inline int lumetta_mutex_held(const char* objectName) {
    char path[LUMETTA_PATH_MAX];
    int fd, held,
        error = lumetta_lock_file_path(getenv("XDG_RUNTIME_DIR"), objectName, path, sizeof path);
    if (error != 0) {
        errno = error;
        return -1;
    }
    fd = open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) return errno == ENOENT ? 0 : -1;
    /* Holders keep a shared lock: an exclusive one is refused while any holder lives. */
    if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
        held = 0;
        flock(fd, LOCK_UN);
    } else {
        held = errno == EWOULDBLOCK ? 1 : -1;
    }
    error = errno;
    close(fd);
    errno = error;
    return held;
}

/* Whether an updater is updating the product (its "_UpdateMutex" is held): 1, 0 or -1. */
static inline int lumetta_updater_at_work(const char* productName) {
    char name[LUMETTA_PATH_MAX];
    if (snprintf(name, sizeof name, "%s_UpdateMutex", productName) >= (int)sizeof name) {
        errno = ENAMETOOLONG;
        return -1;
    }
    return lumetta_mutex_held(name);
}

typedef struct lumetta_event {
    sem_t* semaphore;
} lumetta_event;

/* Opens the named event, creating it (not signalled) when it does not exist yet. Returns 0
 * or an errno value; on failure ev->semaphore is null. */
static inline int lumetta_event_open(const char* objectName, lumetta_event* ev) {
    char name[LUMETTA_PATH_MAX];
    int error = lumetta_semaphore_name(objectName, name, sizeof name);
    ev->semaphore = NULL;
    if (error != 0) return error;
    ev->semaphore = sem_open(name, O_CREAT, 0600, 0);
    if (ev->semaphore == SEM_FAILED) {
        ev->semaphore = NULL;
        return errno;
    }
    return 0;
}

/* Opens the product's exit event (productName + "_ExitEvent"). Returns 0 or an errno value. */
static inline int lumetta_exit_event_open(const char* productName, lumetta_event* ev) {
    char name[LUMETTA_PATH_MAX];
    ev->semaphore = NULL;
    if (snprintf(name, sizeof name, "%s_ExitEvent", productName) >= (int)sizeof name)
        return ENAMETOOLONG;
    return lumetta_event_open(name, ev);
}

/* Waits until the event is set, taking its signal (it resets itself). A negative timeout
 * waits without limit, 0 only looks. Returns 1 when signalled, 0 when the time ran out, -1
 * on an error (errno tells which). Any thread; several waiters each need a signal. */
static inline int lumetta_event_wait(lumetta_event* ev, long timeoutMs) {
    int result;
    if (ev == NULL || ev->semaphore == NULL) {
        errno = EINVAL;
        return -1;
    }
    if (timeoutMs < 0) {
        do result = sem_wait(ev->semaphore);
        while (result != 0 && errno == EINTR);
    } else if (timeoutMs == 0) {
        result = sem_trywait(ev->semaphore);
    } else {
        struct timespec until;
        clock_gettime(CLOCK_REALTIME, &until);
        until.tv_sec += timeoutMs / 1000;
        until.tv_nsec += (timeoutMs % 1000) * 1000000L;
        if (until.tv_nsec >= 1000000000L) {
            until.tv_sec += 1;
            until.tv_nsec -= 1000000000L;
        }
        do result = sem_timedwait(ev->semaphore, &until);
        while (result != 0 && errno == EINTR);
    }
    if (result == 0) return 1;
    return (errno == ETIMEDOUT || errno == EAGAIN) ? 0 : -1;
}

/* Closes the event; the name stays until the updater removes it. */
static inline void lumetta_event_close(lumetta_event* ev) {
    if (ev != NULL && ev->semaphore != NULL) {
        sem_close(ev->semaphore);
        ev->semaphore = NULL;
    }
}

#ifdef __cplusplus
}
#endif

#endif /* LUMETTA_PRODUCT_H */
