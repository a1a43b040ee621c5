#pragma once

#include <QProcess>

/// How long the tests wait for something that has to happen, in milliseconds. Only a failure takes so long.
inline constexpr int patienceMs = 3'000;

/// A process that ends with the test that started it, whatever becomes of that.
class childProcess : public QProcess
{
public:
    childProcess();
    ~childProcess() override;
};
