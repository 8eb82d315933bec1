#include "app/cli_output.h"

#include "fs/sys_calls.h"

namespace {
constexpr size_t kFlushAt = 1 << 16;
}

CliOut::CliOut(Target target)
    : m_target(target)
{
}

CliOut::~CliOut() { flush(); }

void CliOut::write(std::string_view bytes)
{
    m_buffer.append(bytes);
    if (m_target == Target::Stdout && m_buffer.size() >= kFlushAt)
        flush();
}

void CliOut::line(std::string_view text)
{
    m_buffer.append(text);
    m_buffer.push_back('\n');
    if (m_target == Target::Stdout && m_buffer.size() >= kFlushAt)
        flush();
}

void CliOut::flush()
{
    if (m_target != Target::Stdout || m_buffer.empty())
        return;
    // A closed pipe (brondel list | head) is not an error worth reporting.
    sysWriteAll(STDOUT_FILENO, m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}
