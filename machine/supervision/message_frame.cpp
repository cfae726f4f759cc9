#include "machine/supervision/message_frame.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace NVORHOST {
namespace {

using TFrameSize = std::uint32_t;
constexpr std::size_t headBytes = sizeof(TFrameSize) + 1;

}  // namespace

std::string EncodeFrame(unsigned char kind, std::string_view bytes) {
    const auto size = static_cast<TFrameSize>(bytes.size());
    std::string frame(headBytes, static_cast<char>(kind));
    std::memcpy(frame.data(), &size, sizeof(size));
    return frame.append(bytes);
}

std::vector<TMessageFrame> TFrameReader::Add(std::string_view piece) {
    unread_ += piece;
    std::vector<TMessageFrame> frames;
    std::size_t begin = 0;
    TFrameSize size = 0;
    while (unread_.size() - begin >= headBytes) {
        std::memcpy(&size, unread_.data() + begin, sizeof(size));
        if (unread_.size() - begin - headBytes < size) {
            break;
        }
        frames.push_back({static_cast<unsigned char>(unread_[begin + sizeof(size)]),
                          unread_.substr(begin + headBytes, size)});
        begin += headBytes + size;
    }
    unread_.erase(0, begin);
    return frames;
}

}  // namespace NVORHOST
