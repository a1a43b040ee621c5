#include "client/socketPath.h"

#include "client/progressClient.h"
#include "wire/places.h"

using error = progressClient::error;

std::string socketPath(const std::string &identifier)
{
    const auto path = wire::socketPath(wire::socketFolder(), identifier);
    if (!path)
        throw error(error::reason::badArgument,
                    "an identifier is a part of a file name: not empty, without \"/\"");
    // What would fit into the usual folder, /run/user/UID/progressd, is no fault of the caller's.
    constexpr std::size_t longestUsual = 70;
    if (!wire::fitsSocket(*path))
        throw error(identifier.size() > longestUsual ? error::reason::badArgument : error::reason::system,
                    *path + " is too long for a socket");
    return *path;
}

void makeSocketFolder()
{
    if (const std::string fault = wire::makeSocketFolder(wire::socketFolder()); !fault.empty())
        throw error(error::reason::system, fault);
}

void checkSocketFolder()
{
    if (const std::string fault = wire::faultOfSocketFolder(wire::socketFolder()); !fault.empty())
        throw error(error::reason::notOurs, fault + "; it has to be this user's alone");
}
