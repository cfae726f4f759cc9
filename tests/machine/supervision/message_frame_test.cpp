#include "machine/supervision/message_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using std::literals::operator""s;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(MessageFrame, HasLengthKindAndBytes) {
    EXPECT_EQ(EncodeFrame(7, "abc"),
              "\x03\0\0\0\x07"
              "abc"s);
    EXPECT_EQ(EncodeFrame(0, ""), "\0\0\0\0\0"s);
}

TEST(FrameReader, ReturnsAllCompleteFramesOfAPiece) {
    TFrameReader reader;
    EXPECT_THAT(reader.Add(EncodeFrame(1, "one") + EncodeFrame(2, "") + EncodeFrame(3, "three")),
                ElementsAre(TMessageFrame{1, "one"}, TMessageFrame{2, ""}, TMessageFrame{3, "three"}));
}

TEST(FrameReader, KeepsAnIncompleteFrameForTheNextPiece) {
    const std::string stream = EncodeFrame(1, "one") + EncodeFrame(2, "two");
    for (std::size_t size = 0; size <= stream.size(); ++size) {
        TFrameReader reader;
        auto frames = reader.Add(std::string_view(stream).substr(0, size));
        for (TMessageFrame& frame : reader.Add(std::string_view(stream).substr(size))) {
            frames.push_back(frame);
        }
        EXPECT_THAT(frames, ElementsAre(TMessageFrame{1, "one"}, TMessageFrame{2, "two"})) << size;
    }
}

TEST(FrameReader, ReturnsNoFrameBeforeItsLastByte) {
    TFrameReader reader;
    const std::string frame = EncodeFrame(1, "one");
    EXPECT_THAT(reader.Add(std::string_view(frame).substr(0, frame.size() - 1)), IsEmpty());
}

}  // namespace
}  // namespace NVORHOST
