// Drives libxml2's push parser. Its handlers are C functions that must not throw: what goes wrong in one is
// kept and thrown once the library has returned.
#include "vorhost/cimxml/xml_parser.h"

#include "vorhost/cimxml/cim_xml_error.h"
#include "vorhost/cimxml/format.h"
#include "vorhost/cimxml/xml_text.h"

#include <libxml/parser.h>

#include <algorithm>
#include <exception>
#include <new>
#include <string>

namespace NVORHOST {
namespace {

// The library scans its whole buffer again for each 300 bytes of a CDATA section: the less it holds at a
// time, the better.
constexpr std::size_t pieceBytes = 4096;
constexpr std::size_t partsPerAttribute = 5;

std::string_view AsView(const xmlChar* begin, const xmlChar* end) {
    return {
        reinterpret_cast<const char*>(begin),  // NOLINT(*-reinterpret-cast): the library's bytes are UTF-8
        static_cast<std::size_t>(end - begin)};
}

std::string_view AsView(const xmlChar* text) {
    return AsView(text, text + xmlStrlen(text));
}

// Some of what goes wrong, such as in converting to UTF-8, the library tells standard error, past a parser's
// own handlers.
class TQuietLibrary {
  public:
    TQuietLibrary() { xmlSetGenericErrorFunc(nullptr, &TQuietLibrary::Ignore); }
    ~TQuietLibrary() { xmlSetGenericErrorFunc(previousContext_, previous_); }
    TQuietLibrary(const TQuietLibrary&) = delete;
    TQuietLibrary& operator=(const TQuietLibrary&) = delete;

  private:
    // NOLINTNEXTLINE(cert-dcl50-cpp): the type that the library asks for
    static void Ignore(void* /*context*/, const char* /*message*/, ...) {}

    xmlGenericErrorFunc previous_ = xmlGenericError;
    void* previousContext_ = xmlGenericErrorContext;
};

// The library's messages end in a line feed and may have one within.
std::string CauseOf(const xmlError& error, bool isRootClosed) {
    // One code for a document with too much and one with too little; the library's text fits the first.
    if (error.code == XML_ERR_DOCUMENT_END && !isRootClosed) {
        return "the document ends too early";
    }
    std::string cause(TrimXmlSpace(error.message != nullptr ? error.message : "not well formed"));
    std::ranges::replace(cause, '\n', ' ');
    return cause;
}

}  // namespace

std::optional<std::string_view> TXmlAttributes::Find(std::string_view name) const {
    for (std::size_t at = 0; at + partsPerAttribute <= parts_.size(); at += partsPerAttribute) {
        if (parts_[at + 1] == nullptr && AsView(parts_[at]) == name) {
            return AsView(parts_[at + 3], parts_[at + 4]);
        }
    }
    return std::nullopt;
}

class TXmlParser::TState {
  public:
    explicit TState(IXmlEvents& events) : events_(events) {
        context_ = MakeContext(*this);  // errors call back before there is a context
    }

    void Parse(std::string_view piece, bool isLast) {
        Push(piece, isLast);
        while (IsHoldingSectionBack()) {
            const std::size_t before = CountPending();
            Push({}, /*isLast=*/false);
            if (CountPending() == before) {
                break;
            }
        }
        if (CountPending() > maxMarkupBytes) {
            throw TCimXmlCause("a tag, comment or processing instruction is longer than " +
                               std::to_string(maxMarkupBytes) + " bytes");
        }
    }

    bool IsWellFormed() const { return context_->wellFormed != 0; }

    int GetLine() const {
        const bool isOpen = failureLine_ == 0 && context_ != nullptr && context_->input != nullptr;
        return isOpen ? context_->input->line : failureLine_;
    }

  private:
    struct TFree {
        void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
    };
    using TContext = std::unique_ptr<xmlParserCtxt, TFree>;

    static TContext MakeContext(TState& state) {
        const TQuietLibrary quiet;
        xmlSAXHandler handlers{};
        handlers.initialized = XML_SAX2_MAGIC;
        handlers.startElementNs = &TState::OnStartElement;
        handlers.endElementNs = &TState::OnEndElement;
        handlers.characters = &TState::OnText;
        // The same function for both, or the library guesses which white space matters.
        handlers.ignorableWhitespace = &TState::OnText;
        handlers.cdataBlock = &TState::OnText;
        handlers.internalSubset = &TState::OnDocumentType;
        handlers.serror = &TState::OnError;
        TContext context(xmlCreatePushParserCtxt(&handlers, &state, nullptr, 0, nullptr));
        if (context == nullptr) {
            throw std::bad_alloc();
        }
        // Without the second one an ampersand in an attribute comes as "&#38;". Nothing else is replaced: no
        // entity can be declared (see OnDocumentType).
        xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
        return context;
    }

    void Push(std::string_view piece, bool isLast) {
        const TQuietLibrary quiet;
        const int code = xmlParseChunk(context_.get(), piece.data() != nullptr ? piece.data() : "",
                                       static_cast<int>(piece.size()), isLast ? 1 : 0);
        if (failure_ != nullptr) {  // most errors come to OnError
            std::rethrow_exception(failure_);
        }
        if (code == XML_ERR_INVALID_ENCODING || (!isLast && context_->instate == XML_PARSER_EOF)) {
            throw TCimXmlCause("bytes that are not of the document's encoding");
        }
    }

    std::size_t CountPending() const {
        const xmlParserInput* const input = context_->input;
        return input == nullptr ? 0 : static_cast<std::size_t>(input->end - input->cur);
    }

    // A call of the push parser hands out at most one piece of a CDATA section.
    bool IsHoldingSectionBack() const {
        constexpr std::size_t sectionPieceBytes = 300;
        return context_->instate == XML_PARSER_CDATA_SECTION && CountPending() > sectionPieceBytes;
    }

    // Runs what an event does, unless parsing has failed already.
    template <typename TAction>
    static void Guard(void* self, const TAction& action) noexcept {
        auto& state = *static_cast<TState*>(self);
        if (state.failure_ != nullptr) {
            return;
        }
        try {
            action(state);
        } catch (...) {
            state.failureLine_ = state.GetLine();
            state.failure_ = std::current_exception();
            if (state.context_ != nullptr) {
                xmlStopParser(state.context_.get());
            }
        }
    }

    static void OnStartElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* /*uri*/,
                               int /*namespaceCount*/, const xmlChar** /*namespaces*/, int attributeCount,
                               int /*defaultedCount*/, const xmlChar** attributes) {
        Guard(self, [&](TState& state) {
            if (++state.depth_ > maxElementDepth) {
                throw TCimXmlCause("elements stand deeper than " + std::to_string(maxElementDepth) +
                                   " levels");
            }
            const auto count = static_cast<std::size_t>(attributeCount);
            if (count > maxAttributes) {
                throw TCimXmlCause("a tag has more than " + std::to_string(maxAttributes) + " attributes");
            }
            const TXmlAttributes found(std::span(attributes, count * partsPerAttribute));
            if (prefix == nullptr) {
                state.events_.StartElement(AsView(name), found);
            } else {
                state.events_.StartElement(std::string(AsView(prefix)).append(":").append(AsView(name)),
                                           found);
            }
        });
    }

    static void OnEndElement(void* self, const xmlChar* /*name*/, const xmlChar* /*prefix*/,
                             const xmlChar* /*uri*/) {
        Guard(self, [](TState& state) {
            state.isRootClosed_ = --state.depth_ == 0;
            state.events_.EndElement();
        });
    }

    static void OnText(void* self, const xmlChar* text, int length) {
        Guard(self, [&](TState& state) { state.events_.Text(AsView(text, text + length)); });
    }

    // Called behind the names of a DOCTYPE: a subset would come next. Nothing of one is ever read, so no
    // entity can be declared.
    static void OnDocumentType(void* self, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                               const xmlChar* /*systemId*/) {
        Guard(self, [](TState& state) {
            if (state.CountPending() > 0 && *state.context_->input->cur == '[') {
                throw TCimXmlCause("a DOCTYPE with an internal subset is not read");
            }
        });
    }

    static void OnError(void* self, xmlErrorPtr error) {
        // Namespaces mean nothing in these documents: prefixes need no declaration.
        if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE) {
            return;
        }
        Guard(self, [&](TState& state) {
            if (error->code == XML_ERR_NO_MEMORY) {
                throw std::bad_alloc();
            }
            throw TCimXmlCause(CauseOf(*error, state.isRootClosed_));
        });
    }

    IXmlEvents& events_;
    std::size_t depth_ = 0;
    bool isRootClosed_ = false;
    std::exception_ptr failure_;
    int failureLine_ = 0;
    TContext context_;
};

TXmlParser::TXmlParser(IXmlEvents& events) : state_(std::make_unique<TState>(events)) {}
TXmlParser::~TXmlParser() = default;

void TXmlParser::Feed(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += pieceBytes) {
        state_->Parse(bytes.substr(at, pieceBytes), /*isLast=*/false);
    }
}

void TXmlParser::Finish() {
    state_->Parse({}, /*isLast=*/true);
    if (!state_->IsWellFormed()) {
        throw TCimXmlCause("the document is not well formed");
    }
}

int TXmlParser::GetLine() const {
    return state_->GetLine();
}

}  // namespace NVORHOST
