#pragma once

#include <QPushButton>

/// A button of the progress dialog. It hands its events to its parent's event filter first.
class progressButton : public QPushButton
{
    Q_OBJECT

public:
    explicit progressButton(QWidget *parent);
};
