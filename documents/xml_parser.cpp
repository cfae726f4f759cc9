#include "documents/xml_parser.h"

#include "documents/document_error.h"
#include "documents/xml_text.h"

#include <libxml/parser.h>

#include <algorithm>
#include <exception>
#include <new>
#include <string>

namespace NVORHOST {
namespace {

// Small, because libxml2 rescans its whole buffer for each 300 bytes of a CDATA section.
constexpr std::size_t pieceBytes = 4096;
constexpr std::size_t partsPerAttribute = 5;

std::string_view AsView(const xmlChar* begin, const xmlChar* end) {
    return {
        reinterpret_cast<const char*>(begin),  // NOLINT(*-reinterpret-cast): the library's bytes are UTF-8
        static_cast<std::size_t>(end - begin)};
}

std::string_view AsView(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);  // NOLINT(*-reinterpret-cast): as above
}

// Suppresses messages that libxml2 prints to standard error instead of passing them to the error handler,
// such as those about invalid encodings.
class TQuietLibrary {
  public:
    TQuietLibrary() { xmlSetGenericErrorFunc(nullptr, &TQuietLibrary::Ignore); }
    ~TQuietLibrary() { xmlSetGenericErrorFunc(previousContext_, previous_); }
    TQuietLibrary(const TQuietLibrary&) = delete;
    TQuietLibrary& operator=(const TQuietLibrary&) = delete;

  private:
    // NOLINTNEXTLINE(cert-dcl50-cpp): the type that libxml2 requires
    static void Ignore(void* /*context*/, const char* /*message*/, ...) {}

    xmlGenericErrorFunc previous_ = xmlGenericError;
    void* previousContext_ = xmlGenericErrorContext;
};

// Messages of libxml2 end with a line feed and may contain others.
std::string CauseOf(const xmlError& error, bool isRootClosed) {
    // libxml2 has one code for trailing content and for a truncated document; its text fits only the former.
    if (error.code == XML_ERR_DOCUMENT_END && !isRootClosed) {
        return "truncated document";
    }
    std::string cause(TrimXmlSpace(error.message != nullptr ? error.message : "not well-formed"));
    std::ranges::replace(cause, '\n', ' ');
    return cause;
}

}  // namespace

std::optional<std::string_view> TXmlAttributes::Find(std::string_view name) const {
    for (std::size_t i = 0; i + partsPerAttribute <= parts_.size(); i += partsPerAttribute) {
        if (parts_[i + 1] == nullptr && AsView(parts_[i]) == name) {
            return AsView(parts_[i + 3], parts_[i + 4]);
        }
    }
    return std::nullopt;
}

std::string_view TXmlAttributes::GetNamespace() const {
    return namespaceUri_ == nullptr ? std::string_view() : AsView(namespaceUri_);
}

class TXmlParser::TState {
  public:
    explicit TState(IXmlEvents& events) : events_(events) {
        context_ =
            MakeContext(*this);  // not in the initialiser list: error handlers may run before it returns
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
            throw TDocumentCause("a tag, comment or processing instruction is longer than " +
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
        // With different functions, libxml2 would guess which white space is significant.
        handlers.ignorableWhitespace = &TState::OnText;
        handlers.cdataBlock = &TState::OnText;
        handlers.internalSubset = &TState::OnDocumentType;
        handlers.serror = &TState::OnError;
        TContext context(xmlCreatePushParserCtxt(&handlers, &state, nullptr, 0, nullptr));
        if (context == nullptr) {
            throw std::bad_alloc();
        }
        // Without XML_PARSE_NOENT, an ampersand in an attribute is passed as "&#38;". Other entities are not
        // affected, because none can be declared (see OnDocumentType).
        xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
        return context;
    }

    void Push(std::string_view piece, bool isLast) {
        const TQuietLibrary quiet;
        const int code = xmlParseChunk(context_.get(), piece.data() != nullptr ? piece.data() : "",
                                       static_cast<int>(piece.size()), isLast ? 1 : 0);
        if (failure_ != nullptr) {  // most errors are passed to OnError
            std::rethrow_exception(failure_);
        }
        if (code == XML_ERR_INVALID_ENCODING || (!isLast && context_->instate == XML_PARSER_EOF)) {
            throw TDocumentCause("invalid bytes for the encoding of the document");
        }
    }

    std::size_t CountPending() const {
        const xmlParserInput* const input = context_->input;
        return input == nullptr ? 0 : static_cast<std::size_t>(input->end - input->cur);
    }

    // Each call of xmlParseChunk passes on at most one piece of a CDATA section.
    bool IsHoldingSectionBack() const {
        constexpr std::size_t sectionPieceBytes = 300;
        return context_->instate == XML_PARSER_CDATA_SECTION && CountPending() > sectionPieceBytes;
    }

    // Runs the action of an event, unless parsing has already failed. Handlers are called from C code and
    // must not throw, so the exception is stored until xmlParseChunk has returned.
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

    static void OnStartElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                               int /*namespaceCount*/, const xmlChar** /*namespaces*/, int attributeCount,
                               int /*defaultedCount*/, const xmlChar** attributes) {
        Guard(self, [&](TState& state) {
            if (++state.depth_ > maxElementDepth) {
                throw TDocumentCause("elements are nested more than " + std::to_string(maxElementDepth) +
                                     " levels deep");
            }
            const auto count = static_cast<std::size_t>(attributeCount);
            if (count > maxAttributes) {
                throw TDocumentCause("a tag has more than " + std::to_string(maxAttributes) + " attributes");
            }
            const TXmlAttributes found(std::span(attributes, count * partsPerAttribute), uri);
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

    // Called after the names of a DOCTYPE, before an internal subset. Refusing the subset here ensures that
    // no entity is declared.
    static void OnDocumentType(void* self, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                               const xmlChar* /*systemId*/) {
        Guard(self, [](TState& state) {
            if (state.CountPending() > 0 && *state.context_->input->cur == '[') {
                throw TDocumentCause("a DOCTYPE with an internal subset is not supported");
            }
        });
    }

    static void OnError(void* self, xmlErrorPtr error) {
        // Undeclared prefixes are accepted: these documents do not use XML namespaces.
        if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE) {
            return;
        }
        Guard(self, [&](TState& state) {
            if (error->code == XML_ERR_NO_MEMORY) {
                throw std::bad_alloc();
            }
            throw TDocumentCause(CauseOf(*error, state.isRootClosed_));
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
    for (std::size_t begin = 0; begin < bytes.size(); begin += pieceBytes) {
        state_->Parse(bytes.substr(begin, pieceBytes), /*isLast=*/false);
    }
}

void TXmlParser::Finish() {
    state_->Parse({}, /*isLast=*/true);
    if (!state_->IsWellFormed()) {
        throw TDocumentCause("the document is not well-formed");
    }
}

int TXmlParser::GetLine() const {
    return state_->GetLine();
}

}  // namespace NVORHOST
