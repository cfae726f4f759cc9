// The property names of one class. Instances refer to properties by small numbers; this table maps the
// numbers to names and declarations (docs/decisions/0002).
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// All names that the class declares or that its instances have used, numbered from 0 in the order of first
/// use. Shared by the class and its instances.
class TClassNames {
  public:
    static constexpr std::uint32_t notFound = std::numeric_limits<std::uint32_t>::max();

    /// One name. References stay valid as long as the TClassNames exists.
    struct TName {
        std::string spelling;  ///< spelling of the first use
        std::uint32_t hash = 0;
        /// The property that instances without a value return; null if the name is not declared.
        boost::shared_ptr<TMemoryProperty> unset;
    };

    /// Returns the number of a name, or `notFound`.
    std::uint32_t Find(std::string_view name) const noexcept;
    /// Returns the number of a name; assigns the next number to a new name.
    std::uint32_t Intern(std::string_view name);
    /// See `TMemoryClass::Declare`.
    void Declare(TPropertyDeclaration declaration);

    const TName& Get(std::uint32_t nameId) const { return *names_[nameId]; }
    const std::vector<TPropertyDeclaration>& GetDeclarations() const { return declarations_; }

  private:
    /// A slot of the hash table, which uses open addressing with linear probing and is at most half full.
    struct TSlot {
        std::uint32_t hash = 0;
        std::uint32_t nameId = notFound;
    };

    std::uint32_t FindHashed(std::string_view name, std::uint32_t hash) const noexcept;
    void Insert(TSlot slot) noexcept;
    void Grow();

    std::vector<TSlot> slots_ =
        std::vector<TSlot>(16);  // the size is a power of two, so that a mask gives the index
    std::vector<std::unique_ptr<TName>> names_;
    std::vector<TPropertyDeclaration> declarations_;
};

}  // namespace NVORHOST
