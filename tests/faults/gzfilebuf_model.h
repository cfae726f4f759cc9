// A model of the gzip stream buffer: one array with indices, no streambuf, no zlib. The real one must behave
// exactly like it, call by call.
#pragma once

#include "zlib_stand_in.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class TGzFileBufModel {
  public:
    static constexpr int endOfFile = -1;

    TGzFileBufModel(bool forWriting, std::string readable, TZlibFaults faults)
        : forWriting_(forWriting), readable_(std::move(readable)), faults_(faults) {}

    bool Open() { return OpenFile(/*byName=*/true); }
    bool Attach() { return OpenFile(/*byName=*/false); }
    bool Close();
    /// A size of 0 means a null buffer.
    bool SetBuf(std::size_t size);
    int Put(char c);
    std::size_t Write(std::string_view text);
    int Flush() { return Overflow(std::nullopt) ? 0 : -1; }
    int Get();
    std::string Read(std::size_t size);
    /// Destroys this buffer and starts with a new one.
    void Destroy();

    bool IsOpen() const { return isOpen_; }
    long Available() const;

    std::vector<TZlibCall> calls;
    std::vector<std::string> written;
    std::size_t leftOpen = 0;

  private:
    bool OpenFile(bool byName);
    void EnableBuffer();
    void DisableBuffer();
    void EmptyAreas();
    bool Overflow(std::optional<char> c);
    bool HandOver(std::string_view text);
    bool Fill();

    bool forWriting_;
    std::string readable_;
    TZlibFaults faults_;

    bool isOpen_ = false;
    bool isByName_ = false;
    std::size_t readAt_ = 0;

    std::vector<char> storage_;
    bool isUsers_ = false;
    std::size_t nextSize_ = 8192;  // size of the next own buffer; 0 for the unbuffered state
    bool hasPutArea_ = false;
    std::size_t pending_ = 0;  // exceeds the put area after a character was stored that could not be written
    std::size_t getAt_ = 0;
    std::size_t getEnd_ = 0;
};
