#pragma once
// Where a command's lines go: standard output through a large buffer, or memory for
// tests. Nothing is ever written to standard error.

#include <string>
#include <string_view>

class CliOut {
public:
    enum class Target { Stdout, Memory };
    explicit CliOut(Target target = Target::Memory);
    ~CliOut();
    CliOut(const CliOut&) = delete;
    CliOut& operator=(const CliOut&) = delete;

    // Prints `text` followed by one newline.
    void line(std::string_view text);
    // Appends raw bytes (the caller supplies any newline).
    void write(std::string_view bytes);
    void flush();

    // Everything printed so far (Memory target only).
    const std::string& text() const { return m_buffer; }

private:
    Target m_target;
    std::string m_buffer;
};
