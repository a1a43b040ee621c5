#pragma once

#include <QApplication>

class QSessionManager;

/// The application object. A session manager that asks it to commit its data ends the daemon in order.
/// Quitting asks no window for permission.
class MyApplication : public QApplication
{
    Q_OBJECT

public:
    MyApplication(int &argc, char **argv);

    void commitData(QSessionManager &manager);

protected:
    bool event(QEvent *event) override;
};
