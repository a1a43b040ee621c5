// Configuration entries, first in front of the windows that they shape, then again with all of them shown.

#include "tests/fuzz/daemonSession.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    daemonSession::prepareProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::string message = "<configuration>";
    message.append(reinterpret_cast<const char *>(data), size).append("</configuration>");
    daemonSession session;
    session.sendCommands(message);
    session.sendCommands("<progress>create:0;Copying</progress><progress>addText:9;of many</progress>"
                         "<progress>addButt:1;Cancel</progress><progress>busyOn</progress>"
                         "<progress>update:0;42</progress>");
    session.sendCommands(message);
    session.sendCommands("<progress>activate</progress><progress>remove:0</progress>");
    return 0;
}
