#pragma once

#include <QCommonStyle>

/// The style of every bar.
class progressStyle : public QCommonStyle
{
    Q_OBJECT
};
