#pragma once

#include "historyfetch.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace driver {

/// "./history.txt" in the making: one event a line, the eight fields of a record as decimal numbers with
/// single blanks between them. It grows under a name of its own and gets its place in one step, so that
/// nobody ever reads half of it.
class HistoryFile
{
public:
    /// Makes the file beside its later place; nothing when the folder does not allow that.
    static std::optional<HistoryFile> create();

    /// Writes the records and puts the file in its place, replacing an earlier one. False when the disk does
    /// not take all of it: then the earlier file is still there. To be called once.
    bool publish(const std::vector<HistoryRecord>& records);

    HistoryFile(HistoryFile&&) = default;
    HistoryFile& operator=(HistoryFile&&) = delete;
    ~HistoryFile();

private:
    struct Closer
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    HistoryFile(std::string temporaryName, std::FILE* file)
        : m_temporaryName(std::move(temporaryName))
        , m_file(file)
    {}
    bool write(const std::vector<HistoryRecord>& records);

    std::string m_temporaryName;
    std::unique_ptr<std::FILE, Closer> m_file; ///< null once it is in its place or was moved from
};

} // namespace driver
