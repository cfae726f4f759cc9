#include "redaction/identities/shape_permutation.h"

#include <cstddef>
#include <utility>

namespace NVORHOST {
namespace {

// As many as in the format-preserving encryption that NIST recommends (SP 800-38G).
constexpr std::uint8_t rounds = 10;

class TNetwork {
  public:
    TNetwork(IKeyedDigest& digest, const TShape& shape)
        : digest_(digest), shape_(shape), middle_(shape.radices.size() / 2) {}

    void Encipher(TSymbols& symbols) const {
        for (std::uint8_t round = 0; round < rounds; ++round) {
            ApplyRound(symbols, round, /*isForward=*/true);
        }
    }

    void Decipher(TSymbols& symbols) const {
        for (std::uint8_t round = rounds; round-- > 0;) {
            ApplyRound(symbols, round, /*isForward=*/false);
        }
    }

  private:
    struct TRange {
        std::size_t begin, end;
    };

    // Adds a digest of one half to the other, symbol by symbol, or subtracts it.
    void ApplyRound(TSymbols& symbols, std::uint8_t round, bool isForward) const {
        const TRange halves[] = {{0, middle_}, {middle_, symbols.size()}};
        const TRange changed = halves[round % 2];
        const TRange source = halves[1 - round % 2];
        std::string message = shape_.name + '\0' + static_cast<char>(round) + '\0';
        message.append(symbols.begin() + static_cast<std::ptrdiff_t>(source.begin),
                       symbols.begin() + static_cast<std::ptrdiff_t>(source.end));
        TDigest digest{};
        for (std::size_t i = changed.begin; i < changed.end; ++i) {
            constexpr std::size_t symbolsOfDigest = std::tuple_size_v<TDigest> / 2;
            const std::size_t place = (i - changed.begin) % symbolsOfDigest;
            if (place == 0) {
                message[shape_.name.size() + 2] = static_cast<char>((i - changed.begin) / symbolsOfDigest);
                digest = digest_.Compute(message);
            }
            const unsigned int radix = shape_.radices[i];
            const unsigned int added =
                (static_cast<unsigned int>(digest[2 * place]) << 8U | digest[2 * place + 1]) % radix;
            symbols[i] =
                static_cast<std::uint8_t>((symbols[i] + (isForward ? added : radix - added)) % radix);
        }
    }

    IKeyedDigest& digest_;
    const TShape& shape_;
    std::size_t middle_;
};

// Steps to the next text; the last one is followed by the first.
void Increment(const TShape& shape, TSymbols& symbols) {
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        if (++symbols[i] < shape.radices[i]) {
            return;
        }
        symbols[i] = 0;
    }
}

}  // namespace

TSymbols PermuteSymbols(IKeyedDigest& digest, const TShape& shape, const TSymbols& symbols,
                        const TIsAllowed& isAllowed) {
    const TNetwork network(digest, shape);
    TSymbols enciphered = symbols;
    network.Encipher(enciphered);
    while (true) {
        Increment(shape, enciphered);
        TSymbols candidate = enciphered;
        network.Decipher(candidate);
        if (isAllowed(candidate)) {
            return candidate;
        }
    }
}

std::uint32_t PermuteNumber(IKeyedDigest& digest, const std::string& name, std::uint32_t number,
                            std::uint32_t limit, const std::function<bool(std::uint32_t)>& isAllowed) {
    constexpr std::uint8_t radix = 4;
    TShape shape{name, {radix, radix}};
    for (std::uint64_t texts = std::uint64_t{radix} * radix; texts < limit; texts *= radix) {
        shape.radices.push_back(radix);
    }
    TSymbols symbols(shape.radices.size());
    for (std::size_t i = symbols.size(); i-- > 0; number /= radix) {
        symbols[i] = static_cast<std::uint8_t>(number % radix);
    }
    const auto toNumber = [](const TSymbols& text) {
        std::uint32_t value = 0;
        for (const std::uint8_t symbol : text) {
            value = value * radix + symbol;
        }
        return value;
    };
    const auto isAllowedText = [&](const TSymbols& text) {
        const std::uint32_t value = toNumber(text);
        return value < limit && isAllowed(value);
    };
    return toNumber(PermuteSymbols(digest, shape, symbols, isAllowedText));
}

}  // namespace NVORHOST
