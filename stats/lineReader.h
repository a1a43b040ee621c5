#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

/// Reads a file line by line through a buffer of fixed size.
class lineReader
{
public:
    /// Bytes of the longest line that is read, its line feed not counted. A longer line is passed over whole.
    static constexpr std::size_t maxLine = std::size_t{64} * 1024;

    /// `descriptor` is not owned; it is open for reading and outlives the reader.
    explicit lineReader(int descriptor);

    /// The next line without its line feed, or nothing at the end of the file. A last line needs no line
    /// feed. The text is valid until the next call.
    std::optional<std::string_view> next();

private:
    bool refill();

    int m_descriptor;
    std::vector<char> m_buffer;
    /// The bytes that were read and not yet handed out.
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    /// The bytes up to the next line feed belong to a line that is too long.
    bool m_passingOver = false;
};
