#include "app/MyApplication.h"

MyApplication::MyApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    connect(this, &QGuiApplication::commitDataRequest, this, &MyApplication::commitData);
    setQuitOnLastWindowClosed(false);
}

void MyApplication::commitData(QSessionManager &)
{
    // Not quit(): that asks every window for permission first.
    exit(0);
}
