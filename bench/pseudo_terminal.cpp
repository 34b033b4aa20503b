#include "bench/pseudo_terminal.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace tnv5::bench {

namespace {

int checked(int result, const char* what)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

} // namespace

TPseudoTerminal::TPseudoTerminal()
{
    FMaster = checked(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "pseudo-terminal");
    checked(grantpt(FMaster), "grantpt");
    checked(unlockpt(FMaster), "unlockpt");
    char path[64];
    checked(-ptsname_r(FMaster, path, sizeof path), "ptsname");
    FPath = path;
    FSlave = checked(open(path, O_RDWR | O_NOCTTY | O_CLOEXEC), path);
    termios settings{};
    checked(tcgetattr(FSlave, &settings), "tcgetattr");
    cfmakeraw(&settings);
    checked(tcsetattr(FSlave, TCSANOW, &settings), "tcsetattr");
}

TPseudoTerminal::TPseudoTerminal(TPseudoTerminal&& other) noexcept
    : FMaster(std::exchange(other.FMaster, -1)),
      FSlave(std::exchange(other.FSlave, -1)),
      FPath(std::move(other.FPath))
{
}

TPseudoTerminal::~TPseudoTerminal()
{
    for (const int descriptor : {FSlave, FMaster}) {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
}

} // namespace tnv5::bench
