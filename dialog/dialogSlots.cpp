#include "dialog/dialogSlots.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

bool dialogSlots::hasContent() const
{
    return !groups().empty();
}

bool dialogSlots::hasUnfinished() const
{
    for (int i = 0; i < MAX_ENTRIES; ++i) {
        if (showsAny(i) && !finished[i])
            return true;
    }
    return false;
}

void dialogSlots::join(int id, int leaderId)
{
    if (id == leaderId && leader[id] != id)
        coming[id] = 1 + *std::max_element(std::begin(coming), std::end(coming));
    leader[id] = leaderId;
}

void dialogSlots::leaveIfEmpty(int id)
{
    if (showsAny(id))
        return;
    leader[id] = -1;
    coming[id] = 0;
}

std::vector<dialogSlots::group> dialogSlots::groups() const
{
    int ids[MAX_ENTRIES];
    std::iota(std::begin(ids), std::end(ids), 0);
    const auto rank = [this](int id) {
        return std::pair(leader[id] < 0 ? 0 : coming[leader[id]], leader[id]);
    };
    std::stable_sort(std::begin(ids), std::end(ids), [&rank](int a, int b) { return rank(a) < rank(b); });
    std::vector<group> found;
    for (const int id : ids) {
        if (!showsAny(id))
            continue;
        if (found.empty() || found.back().leader != leader[id])
            found.push_back({leader[id], {}});
        found.back().ids.push_back(id);
    }
    if (found.size() == 1)
        found.front().leader = -1;
    return found;
}

int dialogSlots::groupOf(int id) const
{
    for (const group &each : groups()) {
        if (std::find(each.ids.begin(), each.ids.end(), id) != each.ids.end())
            return each.leader;
    }
    return -1;
}
