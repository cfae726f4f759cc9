#include "vorhost/cimxml/parse.h"

#include "vorhost/cimxml/namespace_reader.h"
#include "vorhost/cimxml/xml_parser.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

// Classes cannot be merged: what the target's own instances hold need not fit the declarations of the
// document.
void MoveClasses(const std::string& name, TMemoryNamespace&& loaded, TMemoryNamespace& target) {
    for (const auto& each : loaded.GetClasses()) {
        if (target.FindClass(each->GetName()) != nullptr) {
            ThrowAt({name, 0, each->GetName(), {}}, "the namespace has this class already");
        }
    }
    target.TakeClasses(std::move(loaded));
}

// `feed` hands the whole document to the parser that it is called with.
template <typename TFeed>
void Load(const std::string& name, TMemoryNamespace& target, const TFeed& feed) {
    TMemoryNamespace loaded;
    TNamespaceReader reader(loaded);
    TXmlParser parser(reader);
    try {
        feed(parser);
        parser.Finish();
    } catch (const TCimXmlCause& cause) {
        TCimXmlPlace place = reader.GetPlace();
        place.file = name;
        place.line = parser.GetLine();
        ThrowAt(place, cause.what());
    }
    MoveClasses(name, std::move(loaded), target);
}

// A file that is open for reading.
class TInputFile {
  public:
    explicit TInputFile(const std::string& path)
        : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ < 0) {
            ThrowUnreadable();
        }
    }
    TInputFile(const TInputFile&) = delete;
    TInputFile& operator=(const TInputFile&) = delete;
    ~TInputFile() { (void)close(descriptor_); }  // nothing was written that closing could lose

    /// The next bytes; none at the end.
    std::string_view Read() {
        ssize_t count = 0;
        do {
            count = read(descriptor_, buffer_.data(), buffer_.size());
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            ThrowUnreadable();
        }
        return {buffer_.data(), static_cast<std::size_t>(count)};
    }

  private:
    [[noreturn]] void ThrowUnreadable() const {
        const int cause = errno;
        ThrowAt({path_, 0, {}, {}}, "cannot be read: " + std::system_category().message(cause));
    }

    std::string path_;
    int descriptor_;
    std::array<char, 65536> buffer_;
};

}  // namespace

void LoadNamespaceFromText(const std::string& name, std::string_view text, TMemoryNamespace& target) {
    Load(name, target, [text](TXmlParser& parser) { parser.Feed(text); });
}

void LoadNamespaceFromFile(const std::string& path, TMemoryNamespace& target) {
    TInputFile file(path);
    Load(path, target, [&file](TXmlParser& parser) {
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            parser.Feed(bytes);
        }
    });
}

}  // namespace NVORHOST
