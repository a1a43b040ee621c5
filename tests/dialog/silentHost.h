#pragma once

#include "dialog/dialogHost.h"

/// A host that does nothing.
class silentHost : public dialogHost
{
public:
    void progressVisibilityChanged(bool) override {}
    void updateTotalPercent(int, int) override {}
    void clicked(int) override {}
    void closed() override {}
    bool isInputBlocked() const override { return false; }
};
