#include "machine/parse/utmp.h"

#include "machine/parse/byte_view.h"

namespace NVORHOST {

std::uint32_t CountUserProcesses(std::string_view bytes) {
    constexpr std::size_t recordSize = 384;
    constexpr std::uint16_t userProcess = 7;
    const TByteView view(bytes);
    std::uint32_t count = 0;
    for (std::size_t start = 0; start + recordSize <= view.GetSize(); start += recordSize) {
        count += view.GetWord(start) == userProcess ? 1U : 0U;
    }
    return count;
}

}  // namespace NVORHOST
