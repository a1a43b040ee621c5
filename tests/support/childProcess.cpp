#include "tests/support/childProcess.h"

#include <csignal>
#include <sys/prctl.h>

childProcess::childProcess()
{
    setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

childProcess::~childProcess()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(patienceMs))
        kill();
    waitForFinished(patienceMs);
}
