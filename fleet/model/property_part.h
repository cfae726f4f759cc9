// Which part of a stored resource a property belongs to, by the meaning of properties.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NFLEET {

enum class EPropertyPart : std::uint8_t {
    stable,       ///< in the version
    identifying,  ///< in the identity of the presence
    isVolatile,   ///< in the row of the inventory
};

/// The properties of one resource type that are not stable.
class TTypeParts {
  public:
    void Set(std::string_view property, EPropertyPart part);

    EPropertyPart Get(std::string_view property) const {
        return (lengths_ >> (property.size() % lengthBits) & 1U) == 0 ? EPropertyPart::stable
                                                                      : Find(property);
    }

  private:
    static constexpr std::size_t lengthBits = 64;

    EPropertyPart Find(std::string_view property) const;

    std::vector<std::pair<std::string, EPropertyPart>> rows_;
    std::uint64_t lengths_ = 0;  // bit n is set if a row's name has n characters, modulo 64
};

/// Returns the properties of a type that are not stable, as the model's meaning of properties marks them.
const TTypeParts& GetTypeParts(std::string_view type);

/// True for the types that a fleet stores: all but processes, which are others in every inventory, and the
/// result of the plug-in, which repeats a document.
bool IsStoredType(std::string_view type);

}  // namespace NFLEET
