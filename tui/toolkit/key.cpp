#include "tui/toolkit/key.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "framework/conversion.h"
#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

// Whether a key may still come after a read failed with this error. The ones named here pass: nothing was
// read, a signal came in between, the input does not block. Any other one, such as that of a terminal that
// hung up or of a closed descriptor, would come again at once and for ever.
bool bInputAlive(int nError) {
    if (nError != 0 && nError != EINTR && nError != EAGAIN) {
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

// How many bytes a character has whose first one this is; 0 when none begins with it.
std::size_t nBytes(unsigned char c) {
    return c < 0x80 ? 1 : c < 0xC2 ? 0 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF5 ? 4 : 0;
}

// Makes characters of the bytes that come. Curses would do so too, but keeps what follows a byte that is no
// UTF-8, such as the letters of a terminal with another set of characters, until its buffer is full.
class CCharacterKeys {
  public:
    // True when the byte is the last one of a character.
    bool bComplete(int nByte, int* pnKey) {
        const auto c = static_cast<unsigned char>(nByte);
        if ((c & 0xC0) != 0x80) {
            Forget();
        } else if (m_nBytes == 0) {
            return false;
        }
        m_tabByte[m_nBytes++] = static_cast<char>(c);
        const std::size_t nNeeded = nBytes(static_cast<unsigned char>(m_tabByte[0]));
        if (m_nBytes < nNeeded) {
            return false;
        }
        const CTString cs = csFromUTF8({m_tabByte.data(), m_nBytes});
        Forget();
        *pnKey = static_cast<int>(cs[0]);
        return cs.nGetLength() == 1 && nNeeded != 0;
    }
    void Forget() { m_nBytes = 0; }

  private:
    std::array<char, 4> m_tabByte{};
    std::size_t m_nBytes = 0;
};
CCharacterKeys g_clCharacter;

}  // namespace

bool bReadKey(int* pnKey) {
    while (bDialogOpen()) {
        errno = 0;
        const int nKey = ::wgetch(stdscr);
        if (nKey >= KEY_MIN) {
            g_clCharacter.Forget();
            *pnKey = nKey;
            if (nKey == KEY_RESIZE) {
                CheckScreenSize();
            }
            return true;
        }
        if (nKey == ERR ? !bInputAlive(errno) : g_clCharacter.bComplete(nKey, pnKey)) {
            return nKey != ERR;
        }
    }
    return false;
}

void ForgetKeys() {
    if (!bDialogOpen()) {
        return;
    }
    bool bResized = false;
    ::nodelay(stdscr, TRUE);
    for (int nKey = 0; nKey != ERR;) {
        nKey = ::wgetch(stdscr);
        bResized |= nKey == KEY_RESIZE;
    }
    ::nodelay(stdscr, FALSE);
    g_clCharacter.Forget();
    if (bResized) {
        CheckScreenSize();
        ::ungetch(KEY_RESIZE);
    }
}

}  // namespace kalmo
