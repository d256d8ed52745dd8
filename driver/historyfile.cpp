#include "historyfile.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace driver {

namespace {

// Read there by whoever asked for the download.
constexpr const char* finalName = "./history.txt";

} // namespace

std::optional<HistoryFile> HistoryFile::create()
{
    // A name that no other thread or process can have: several may download at once.
    std::string name = std::string(finalName) + ".XXXXXX";
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    std::FILE* file = ::fdopen(descriptor, "w");
    if (!file) {
        ::close(descriptor);
        ::unlink(name.c_str());
        return std::nullopt;
    }
    return HistoryFile(name, file);
}

HistoryFile::~HistoryFile()
{
    if (m_file)
        ::unlink(m_temporaryName.c_str());
}

bool HistoryFile::publish(const std::vector<HistoryRecord>& records)
{
    if (!m_file || !write(records) || std::rename(m_temporaryName.c_str(), finalName) != 0)
        return false;
    m_file.reset();
    return true;
}

/// True once everything is on the disk: a full one may tell only then.
bool HistoryFile::write(const std::vector<HistoryRecord>& records)
{
    std::FILE* file = m_file.get();
    for (const HistoryRecord& record : records) {
        for (std::size_t field = 0; field < record.size(); ++field) {
            const char end = field + 1 < record.size() ? ' ' : '\n';
            if (std::fprintf(file, "%u%c", unsigned(record[field]), end) < 0)
                return false;
        }
    }
    // Readable as any other file, not only by its owner as a temporary one.
    return std::fflush(file) == 0 && ::fchmod(::fileno(file), 0644) == 0 && ::fsync(::fileno(file)) == 0;
}

} // namespace driver
