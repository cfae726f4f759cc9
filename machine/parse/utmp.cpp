#include "machine/parse/utmp.h"

#include "machine/parse/byte_view.h"

namespace NVORHOST {

bool IsUserSession(std::string_view record) {
    constexpr std::uint16_t userProcess = 7;
    return TByteView(record).GetWord(0) == userProcess;
}

std::uint32_t CountUserProcesses(std::string_view bytes) {
    std::uint32_t count = 0;
    for (; bytes.size() >= utmpRecordBytes; bytes.remove_prefix(utmpRecordBytes)) {
        count += IsUserSession(bytes) ? 1U : 0U;
    }
    return count;
}

}  // namespace NVORHOST
