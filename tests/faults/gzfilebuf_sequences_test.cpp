// Every sequence of operations on a gzip stream buffer up to a length, compared with the model after each
// step. Long sequences use files in memory; shorter ones use zlib and the disk, or run with each kind of zlib
// call failing.
#include "guarded_buffer.h"
#include "gzfilebuf_model.h"
#include "gzstream/gzfilebuf.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace {

enum EOperation { open, attach, close, setNone, setOne, setSixteen, put, write, flush, get, read, destroy };
constexpr std::array<const char*, 12> operationNames = {"open",      "attach",     "close", "setbuf(null, 0)",
                                                        "setbuf(1)", "setbuf(16)", "put",   "write",
                                                        "flush",     "get",        "read",  "destroy"};

// Longer than the longer user buffer, as is the text to read.
constexpr std::string_view writtenText = "abcdefghijklmnopqrstu";
constexpr std::string_view readableText = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ\xFF!";
constexpr std::size_t readSize = 7;

/// The result of an operation: a number, or the characters read.
struct TAnswer {
    long number = 0;
    std::string text;

    bool operator==(const TAnswer&) const = default;
};

/// Performs the operations on the model.
class TExpected {
  public:
    TExpected(bool forWriting, TZlibFaults faults) : model(forWriting, std::string(readableText), faults) {}

    TAnswer Do(EOperation operation) {
        switch (operation) {
            case open:
                return {model.Open(), {}};
            case attach:
                return {model.Attach(), {}};
            case close:
                return {model.Close(), {}};
            case setNone:
                return {model.SetBuf(0), {}};
            case setOne:
                return {model.SetBuf(1), {}};
            case setSixteen:
                return {model.SetBuf(16), {}};
            case put:
                return {model.Put('\xFF'), {}};
            case write:
                return {static_cast<long>(model.Write(writtenText)), {}};
            case flush:
                return {model.Flush(), {}};
            case get:
                return {model.Get(), {}};
            case read:
                return {0, model.Read(readSize)};
            case destroy:
                model.Destroy();
                return {};
        }
        return {};
    }

    TGzFileBufModel model;
};

/// Performs the operations on the real buffer. `nameNext` names its files; its user buffers are guarded.
class TActual {
  public:
    TActual(bool forWriting, std::function<std::string()> nameNext)
        : mode_(forWriting ? std::ios_base::out : std::ios_base::in), nameNext_(std::move(nameNext)) {}

    TAnswer Do(EOperation operation) {
        switch (operation) {
            case open:
                return {buffer->open(nameNext_().c_str(), mode_) != nullptr, {}};
            case attach:
                return {Attach(), {}};
            case close:
                return {buffer->close() != nullptr, {}};
            case setNone:
                return {buffer->pubsetbuf(nullptr, 0) != nullptr, {}};
            case setOne:
                return {buffer->pubsetbuf(OneCharacter(), 1) != nullptr, {}};
            case setSixteen:
                return {buffer->pubsetbuf(SixteenCharacters(), 16) != nullptr, {}};
            case put:
                return {buffer->sputc('\xFF'), {}};
            case write:
                return {buffer->sputn(writtenText.data(), std::ssize(writtenText)), {}};
            case flush:
                return {buffer->pubsync(), {}};
            case get:
                return {buffer->sbumpc(), {}};
            case read:
                return {0, Read()};
            case destroy:
                buffer = std::make_unique<gzfilebuf>();
                return {};
        }
        return {};
    }

    std::unique_ptr<gzfilebuf> buffer = std::make_unique<gzfilebuf>();

  private:
    static char* OneCharacter() {
        static const TGuardedBuffer memory(1);
        return memory.Data();
    }
    static char* SixteenCharacters() {
        static const TGuardedBuffer memory(16);
        return memory.Data();
    }

    bool Attach() {
        const std::string name = nameNext_();
        if (name.empty()) {
            return buffer->attach(0, mode_) != nullptr;
        }
        const int fd = ::open(name.c_str(), mode_ == std::ios_base::in ? O_RDONLY : O_WRONLY | O_CREAT, 0600);
        if (buffer->attach(fd, mode_) != nullptr) {
            return true;
        }
        ::close(fd);
        return false;
    }

    std::string Read() {
        std::string text(readSize, '\0');
        text.resize(static_cast<std::size_t>(buffer->sgetn(text.data(), std::ssize(text))));
        return text;
    }

    std::ios_base::openmode mode_;
    std::function<std::string()> nameNext_;
};

using TSequence = std::vector<EOperation>;

std::string Said(const TSequence& sequence) {
    std::string said;
    for (const EOperation operation : sequence) {
        said.append(said.empty() ? "" : ", ").append(operationNames[operation]);
    }
    return said;
}

/// Calls `check` with every sequence of 1 to `longest` operations and returns their number. Stops when
/// `check` returns false.
std::size_t ForEachSequence(std::size_t longest, const std::function<bool(const TSequence&)>& check) {
    std::size_t count = 0;
    for (std::size_t length = 1; length <= longest; ++length) {
        TSequence sequence(length, open);
        std::size_t i = 0;
        do {
            ++count;
            if (!check(sequence)) {
                return count;
            }
            for (i = 0; i < length && sequence[i] == destroy; ++i) {
                sequence[i] = open;
            }
            if (i < length) {
                sequence[i] = static_cast<EOperation>(sequence[i] + 1);
            }
        } while (i < length);
    }
    return count;
}

/// Performs `sequence` on both; returns false after the first difference.
bool AgreeStepByStep(const TSequence& sequence, TExpected& expected, TActual& actual) {
    for (std::size_t step = 0; step < sequence.size(); ++step) {
        const TAnswer wanted = expected.Do(sequence[step]);
        const TAnswer got = actual.Do(sequence[step]);
        if (got != wanted || actual.buffer->is_open() != expected.model.IsOpen() ||
            actual.buffer->in_avail() != expected.model.Available()) {
            ADD_FAILURE() << Said(sequence) << ": step " << step + 1 << " answers " << got.number << " \""
                          << got.text << "\" instead of " << wanted.number << " \"" << wanted.text
                          << "\", is open: " << actual.buffer->is_open() << " instead of "
                          << expected.model.IsOpen() << ", available: " << actual.buffer->in_avail()
                          << " instead of " << expected.model.Available();
            return false;
        }
    }
    return true;
}

struct TCase {
    const char* name;
    bool forWriting;
    TZlibFaults faults;
    std::size_t longest;
    std::size_t sequences;
};

void PrintTo(const TCase& tested, std::ostream* out) {
    *out << tested.name;
}

std::string NameOf(const testing::TestParamInfo<TCase>& info) {
    return info.param.name;
}

class TInMemory : public testing::TestWithParam<TCase> {
  protected:
    TInMemory() { Zlib() = {}; }
    ~TInMemory() override { Zlib() = {}; }

    static bool Agree(const TSequence& sequence) {
        Zlib() = {};
        Zlib().readable = readableText;
        Zlib().faults = GetParam().faults;
        TExpected expected(GetParam().forWriting, GetParam().faults);
        TActual actual(GetParam().forWriting, [] { return std::string(); });
        if (!AgreeStepByStep(sequence, expected, actual)) {
            return false;
        }
        expected.model.Destroy();
        actual.buffer.reset();
        EXPECT_EQ(Zlib().calls, expected.model.calls) << Said(sequence);
        EXPECT_EQ(Zlib().written, expected.model.written) << Said(sequence);
        EXPECT_EQ(Zlib().leftOpen.size(), expected.model.leftOpen) << Said(sequence);
        while (!Zlib().leftOpen.empty()) {
            Zlib().Close(Zlib().leftOpen.back());
        }
        return !HasFailure();
    }
};

TEST_P(TInMemory, EverySequenceMatchesTheModel) {
    EXPECT_EQ(ForEachSequence(GetParam().longest, Agree), GetParam().sequences);
}

// clang-format off
const TCase inMemory[] = {
    {"Writing",                              true,  TZlibFaults(),                              5, 271'452},
    {"Reading",                              false, TZlibFaults(),                              5, 271'452},
    {"WritingWithoutAnOpenFile",             true,  TZlibFaults(EZlibFault::openFails),         4, 22'620},
    {"WritingAfterAFailingOpen",             true,  TZlibFaults(EZlibFault::openFails, 1),      4, 22'620},
    {"ReadingWithoutAnOpenFile",             false, TZlibFaults(EZlibFault::openFails),         4, 22'620},
    {"ReadingAfterAFailingOpen",             false, TZlibFaults(EZlibFault::openFails, 1),      4, 22'620},
    {"WritingOfWhichNothingIsTaken",         true,  TZlibFaults(EZlibFault::nothingWritten),    5, 271'452},
    {"WritingOfWhichNothingIsTakenAtFirst",  true,  TZlibFaults(EZlibFault::nothingWritten, 1), 5, 271'452},
    {"WritingOfWhichTheLastIsNotTaken",      true,  TZlibFaults(EZlibFault::shortWrite),        4, 22'620},
    {"WritingOfWhichTheLastIsNotTakenAtFirst", true, TZlibFaults(EZlibFault::shortWrite, 1),    4, 22'620},
    {"WritingWithErrors",                    true,  TZlibFaults(EZlibFault::writeError),        4, 22'620},
    {"WritingAfterAnError",                  true,  TZlibFaults(EZlibFault::writeError, 1),     4, 22'620},
    {"ReadingWithErrors",                    false, TZlibFaults(EZlibFault::readError),         4, 22'620},
    {"ReadingAfterAnError",                  false, TZlibFaults(EZlibFault::readError, 1),      4, 22'620},
    {"WritingWithErrorsOfClose",             true,  TZlibFaults(EZlibFault::closeError),        4, 22'620},
    {"WritingAfterAnErrorOfClose",           true,  TZlibFaults(EZlibFault::closeError, 1),     4, 22'620},
    {"ReadingWithErrorsOfClose",             false, TZlibFaults(EZlibFault::closeError),        4, 22'620},
    {"ReadingAfterAnErrorOfClose",           false, TZlibFaults(EZlibFault::closeError, 1),     4, 22'620},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(GzFileBuf, TInMemory, testing::ValuesIn(inMemory), NameOf);

/// Runs the sequences with zlib itself, on files.
class TOnDisk : public testing::TestWithParam<TCase> {
  protected:
    TOnDisk() {
        std::string name = (std::filesystem::temp_directory_path() / "gzsequences-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        folder_ = name;
        Zlib() = {};
        Zlib().isReal = true;
        gzFile const file = gzopen(Readable().c_str(), "wb");
        EXPECT_EQ(gzwrite(file, readableText.data(), static_cast<unsigned>(readableText.size())),
                  static_cast<int>(readableText.size()));
        EXPECT_EQ(gzclose(file), Z_OK);
    }
    ~TOnDisk() override {
        std::filesystem::remove_all(folder_);
        Zlib() = {};
    }

    bool Agree(const TSequence& sequence) {
        TExpected expected(GetParam().forWriting, GetParam().faults);
        // Names count only files that can be opened, as in the model.
        TActual actual(GetParam().forWriting, [&] {
            return GetParam().forWriting
                       ? Written(expected.model.written.size() - (expected.model.IsOpen() ? 1 : 0))
                       : Readable();
        });
        const bool agreed = AgreeStepByStep(sequence, expected, actual);
        expected.model.Destroy();
        actual.buffer.reset();
        EXPECT_EQ(Zlib().leftOpen.size(), expected.model.leftOpen) << Said(sequence);
        while (!Zlib().leftOpen.empty()) {
            gzclose(Zlib().leftOpen.back());
        }
        for (std::size_t index = 0; index < expected.model.written.size(); ++index) {
            EXPECT_EQ(Unzip(Written(index)), expected.model.written[index]) << Said(sequence);
        }
        return agreed && !HasFailure();
    }

  private:
    std::string Readable() const { return (folder_ / "readable.gz").string(); }
    std::string Written(std::size_t index) const {
        return (folder_ / ("written" + std::to_string(index) + ".gz")).string();
    }

    static std::string Unzip(const std::string& name) {
        gzFile const file = gzopen(name.c_str(), "rb");
        std::string text(1000, '\0');
        const int got = gzread(file, text.data(), static_cast<unsigned>(text.size()));
        EXPECT_EQ(gzclose(file), Z_OK);
        std::filesystem::remove(name);
        text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        return text;
    }

    std::filesystem::path folder_;
};

TEST_P(TOnDisk, EverySequenceMatchesTheModel) {
    EXPECT_EQ(
        ForEachSequence(GetParam().longest, [this](const TSequence& sequence) { return Agree(sequence); }),
        GetParam().sequences);
}

const TCase onDisk[] = {
    {"Writing", true, TZlibFaults(), 4, 22'620},
    {"Reading", false, TZlibFaults(), 4, 22'620},
};

INSTANTIATE_TEST_SUITE_P(GzFileBuf, TOnDisk, testing::ValuesIn(onDisk), NameOf);

}  // namespace
