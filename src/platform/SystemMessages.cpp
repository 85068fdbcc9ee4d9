#include "platform/SystemMessages.h"

#include <cerrno>

namespace Platform {
namespace {

struct MessageEntry {
    uint32_t number;
    const char* text;
};

// Sorted by number for the binary search below.
constexpr MessageEntry kMessages[] = {
    {1, "Incorrect function.\r\n"},
    {2, "The system cannot find the file specified.\r\n"},
    {3, "The system cannot find the path specified.\r\n"},
    {4, "The system cannot open the file.\r\n"},
    {5, "Access is denied.\r\n"},
    {6, "The handle is invalid.\r\n"},
    {8, "Not enough memory resources are available to process this command.\r\n"},
    {13, "The data is invalid.\r\n"},
    {14, "Not enough memory resources are available to complete this operation.\r\n"},
    {17, "The system cannot move the file to a different disk drive.\r\n"},
    {18, "There are no more files.\r\n"},
    {19, "The media is write protected.\r\n"},
    {31, "A device attached to the system is not functioning.\r\n"},
    {32, "The process cannot access the file because it is being used by another process.\r\n"},
    {38, "Reached the end of the file.\r\n"},
    {50, "The request is not supported.\r\n"},
    {80, "The file exists.\r\n"},
    {87, "The parameter is incorrect.\r\n"},
    {109, "The pipe has been ended.\r\n"},
    {111, "The file name is too long.\r\n"},
    {112, "There is not enough space on the disk.\r\n"},
    {122, "The data area passed to a system call is too small.\r\n"},
    {123, "The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {126, "The specified module could not be found.\r\n"},
    {127, "The specified procedure could not be found.\r\n"},
    {145, "The directory is not empty.\r\n"},
    {161, "The specified path is invalid.\r\n"},
    {170, "The requested resource is in use.\r\n"},
    {183, "Cannot create a file when that file already exists.\r\n"},
    {193, "%1 is not a valid Win32 application.\r\n"},
    {203, "The system could not find the environment option that was entered.\r\n"},
    {206, "The filename or extension is too long.\r\n"},
    {234, "More data is available.\r\n"},
    {258, "The wait operation timed out.\r\n"},
    {259, "No more data is available.\r\n"},
    {267, "The directory name is invalid.\r\n"},
    {1155, "No application is associated with the specified file for this operation.\r\n"},
    {1223, "The operation was canceled by the user.\r\n"},
    {1460, "This operation returned because the timeout period expired.\r\n"},
    {1812, "The specified image file did not contain a resource section.\r\n"},
    {1813, "The specified resource type cannot be found in the image file.\r\n"},
    {1814, "The specified resource name cannot be found in the image file.\r\n"},
    {1815, "The specified resource language ID cannot be found in the image file.\r\n"},
    {1921, "The name of the file cannot be resolved by the system.\r\n"},
    {0x80004001u, "Not implemented\r\n"},
    {0x80004002u, "No such interface supported\r\n"},
    {0x80004003u, "Invalid pointer\r\n"},
    {0x80004004u, "Operation aborted\r\n"},
    {0x80004005u, "Unspecified error\r\n"},
    {0x8000FFFFu, "Catastrophic failure\r\n"},
    {0x80010106u, "Cannot change thread mode after it is set.\r\n"},
    {0x80040154u, "Class not registered\r\n"},
};

}  // namespace

const char* SystemMessageText(uint32_t number) {
    const MessageEntry* first = kMessages;
    const MessageEntry* last = kMessages + sizeof(kMessages) / sizeof(kMessages[0]);
    while (first < last) {
        const MessageEntry* mid = first + (last - first) / 2;
        if (mid->number < number)
            first = mid + 1;
        else
            last = mid;
    }
    return (first != kMessages + sizeof(kMessages) / sizeof(kMessages[0]) &&
            first->number == number)
               ? first->text
               : nullptr;
}

uint32_t Win32ErrorFromErrno(int e) {
    switch (e) {
        case 0:
            return 0;
        case ENOENT:
            return 2;
        case ENOTDIR:
            return 3;
        case EMFILE:
        case ENFILE:
            return 4;
        case EACCES:
        case EPERM:
        case EISDIR:
            return 5;
        case EBADF:
            return 6;
        case ENOMEM:
            return 8;
        case EXDEV:
            return 17;
        case EROFS:
            return 19;
        case ETXTBSY:
            return 32;
        case ENOSYS:
        case EOPNOTSUPP:
            return 50;
        case EINVAL:
        case ESRCH:
        case E2BIG:
            return 87;
        case EPIPE:
            return 109;
        case ENOSPC:
        case EDQUOT:
            return 112;
        case ENOTEMPTY:
            return 145;
        case EBUSY:
            return 170;
        case EEXIST:
            return 183;
        case ENOEXEC:
            return 193;
        case ENAMETOOLONG:
            return 206;
        case EAGAIN:
            return 258;
        case ECANCELED:
            return 1223;
        case ETIMEDOUT:
            return 1460;
        case ELOOP:
            return 1921;
        default:
            return 31;
    }
}

uint32_t LastWin32Error() {
    return Win32ErrorFromErrno(errno);
}

}  // namespace Platform
