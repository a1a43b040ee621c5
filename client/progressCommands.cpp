#include "client/progressCommands.h"

#include "client/messageText.h"
#include "wire/words.h"

#include <algorithm>

using verb = wire::progressVerb;

static_assert(progressCommands::slotCount == wire::slotCount);
static_assert(progressCommands::givenUp == wire::givenUpPercent);

namespace
{

std::string command(verb which, std::string_view argument = {})
{
    return message(wire::messageKind::progress, std::string(wire::formOf(which).keyword).append(argument));
}

std::string numberOf(int slot)
{
    if (slot < 0 || slot >= wire::slotCount)
        throw progressError(progressError::reason::badArgument,
                            "slots run from 0 to 9, there is no " + std::to_string(slot));
    return std::to_string(slot);
}

std::string command(verb which, int slot)
{
    return command(which, numberOf(slot));
}

std::string command(verb which, int slot, std::string_view text)
{
    constexpr std::size_t longestText = 64 * 1024;
    return command(which, numberOf(slot) + ';' + carriable(text, wire::messageKind::progress, longestText));
}

} // namespace

progressCommands::~progressCommands() = default;

void progressCommands::createBar(int slot, std::string_view caption)
{
    tell(command(verb::create, slot, caption));
}

void progressCommands::updateBar(int slot, int percent)
{
    const int held = percent == givenUp ? givenUp : std::clamp(percent, 0, 100);
    tell(command(verb::update, slot, std::to_string(held)));
}

void progressCommands::pulse(int slot)
{
    tell(command(verb::pulse, slot));
}

void progressCommands::finishSlot(int slot)
{
    tell(command(verb::finish, slot));
}

void progressCommands::joinSlot(int slot, int leader)
{
    tell(command(verb::join, slot, std::to_string(leader)));
}

void progressCommands::removeBar(int slot)
{
    tell(command(verb::remove, slot));
}

void progressCommands::createText(int slot, std::string_view text)
{
    tell(command(verb::addText, slot, text));
}

void progressCommands::updateText(int slot, std::string_view text)
{
    tell(command(verb::updateText, slot, text));
}

void progressCommands::removeText(int slot)
{
    tell(command(verb::delText, slot));
}

void progressCommands::addButton(int slot, std::string_view label)
{
    tell(command(verb::addButt, slot, label));
}

void progressCommands::removeButton(int slot)
{
    tell(command(verb::delButt, slot));
}

void progressCommands::activate()
{
    tell(command(verb::activate));
}

void progressCommands::messageStart()
{
    tell(command(verb::messageStart));
}

void progressCommands::messageStop()
{
    tell(command(verb::messageStop));
}

void progressCommands::busyOn()
{
    tell(command(verb::busyOn));
}

void progressCommands::busyOff()
{
    tell(command(verb::busyOff));
}

void progressCommands::setAmount(std::int64_t amount)
{
    tell(command(verb::amount, std::to_string(std::clamp<std::int64_t>(amount, 0, wire::largestAmount))));
}

void progressCommands::configure(const std::vector<std::pair<std::string, std::string>> &entries)
{
    tell(message(wire::messageKind::configuration, configurationPayload(entries)));
}

void progressCommands::exitDaemon()
{
    tell(message(wire::messageKind::exit));
}

void progressBatch::tell(const std::string &message)
{
    m_messages += message;
}
