#include "services/drop_action.h"

#include "fs/file_io.h"

#include <QGuiApplication>

#include <optional>

DropChoice dropChoose(Qt::KeyboardModifiers keys, const DropFacts& facts)
{
    if (facts.intoItself)
        return DropChoice::None;
    const bool copy = keys & Qt::ControlModifier;
    const bool move = keys & Qt::ShiftModifier;
    if (keys & Qt::AltModifier)
        return facts.intoOwnFolder ? DropChoice::None : DropChoice::Ask;
    if (copy && !move)
        return DropChoice::Copy; // a copy beside the original is fine: it gets a free name
    if (facts.intoOwnFolder)
        return DropChoice::None;
    if (move && !copy)
        return DropChoice::Move;
    return facts.sameDevice ? DropChoice::Move : DropChoice::Copy;
}

DropFacts dropFactsOfPaths(const std::vector<std::string>& sources, const std::string& target)
{
    DropFacts facts;
    facts.intoOwnFolder = !sources.empty();
    for (const std::string& source : sources) {
        if (pathParent(source) != target)
            facts.intoOwnFolder = false;
        if (target == source || (target.size() > source.size() && target.compare(0, source.size(), source) == 0
                                    && (source == "/" || target[source.size()] == '/')))
            facts.intoItself = true;
    }
    return facts;
}

namespace {

std::optional<Qt::KeyboardModifiers> g_noted; // UI thread only

} // namespace

Qt::KeyboardModifiers dropKeys()
{
    return g_noted ? *g_noted : QGuiApplication::keyboardModifiers();
}

DropKeysNote::DropKeysNote(Qt::KeyboardModifiers keys)
    : m_previous(g_noted.value_or(Qt::NoModifier))
    , m_hadPrevious(g_noted.has_value())
{
    g_noted = keys;
}

DropKeysNote::~DropKeysNote()
{
    g_noted = m_hadPrevious ? std::optional<Qt::KeyboardModifiers>(m_previous) : std::nullopt;
}
