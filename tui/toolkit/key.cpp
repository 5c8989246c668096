#include "tui/toolkit/key.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

// Whether a key may still come after a read failed with this error. The ones named here pass: nothing was
// read, a signal came in between, the input does not block, the bytes are no character. Any other one, such
// as that of a terminal that hung up or of a closed descriptor, would come again at once and for ever.
bool bInputAlive(int nError) {
    if (nError != 0 && nError != EINTR && nError != EAGAIN && nError != EILSEQ) {
        return false;
    }
    pollfd stInput{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    const int nTimeout =
        nError == EAGAIN ? -1 : 0;  // An input that does not block must not be asked in a loop.
    if (::poll(&stInput, 1, nTimeout) <= 0) {
        return true;
    }
    if ((stInput.revents & (POLLERR | POLLNVAL)) != 0) {
        return false;
    }
    // Readable, yet with no bytes to read: the end.
    int nWaiting = 0;
    return ::ioctl(STDIN_FILENO, FIONREAD, &nWaiting) == 0 && nWaiting > 0;
}

}  // namespace

bool bReadKey(int* pnKey) {
    while (bDialogOpen()) {
        wint_t unKey = WEOF;
        errno = 0;
        if (::wget_wch(stdscr, &unKey) != ERR) {
            *pnKey = static_cast<int>(unKey);
            if (*pnKey == KEY_RESIZE) {
                CheckScreenSize();
            }
            return true;
        }
        if (!bInputAlive(errno)) {
            return false;
        }
    }
    return false;
}

void ForgetKeys() {
    if (!bDialogOpen()) {
        return;
    }
    bool bResized = false;
    wint_t unKey = WEOF;
    ::nodelay(stdscr, TRUE);
    for (int nResult = OK; nResult != ERR;) {
        nResult = ::wget_wch(stdscr, &unKey);
        bResized |= nResult == KEY_CODE_YES && unKey == KEY_RESIZE;
    }
    ::nodelay(stdscr, FALSE);
    if (bResized) {
        CheckScreenSize();
        ::ungetch(KEY_RESIZE);
    }
}

}  // namespace kalmo
