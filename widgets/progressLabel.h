#pragma once

#include <QLabel>

/// A caption or a text line of the progress dialog. The text is shown as it came, never as markup.
class progressLabel : public QLabel
{
    Q_OBJECT

public:
    explicit progressLabel(QWidget *parent);
};
