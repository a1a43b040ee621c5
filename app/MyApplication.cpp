#include "app/MyApplication.h"

#include <QEvent>

MyApplication::MyApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    connect(this, &QGuiApplication::commitDataRequest, this, &MyApplication::commitData);
    setQuitOnLastWindowClosed(false);
}

void MyApplication::commitData(QSessionManager &)
{
    quit();
}

/// The toolkit's own way would close all windows first, and stay when one of them, say a box that only a
/// button answers, does not agree.
bool MyApplication::event(QEvent *event)
{
    if (event->type() != QEvent::Quit)
        return QApplication::event(event);
    exit(0);
    return true;
}
