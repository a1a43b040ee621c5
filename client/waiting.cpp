#include "client/waiting.h"

#include <cerrno>
#include <system_error>

bool waitFor(int fd, short events, const deadline &until)
{
    pollfd waiting{fd, events, 0};
    for (;;) {
        const int left = until.leftForPoll();
        if (::poll(&waiting, 1, left) > 0)
            return true;
        if (left == 0 || (left > 0 && until.isOver()))
            return false;
    }
}

std::string systemText(const std::string &what)
{
    return what + ": " + std::generic_category().message(errno);
}
