// The property names of one class. An instance keeps a small number for each of its properties; the class
// knows once what name, declaration and null value stand behind it.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Every name that the class declares or that one of its instances has used, numbered from 0 in the order of
/// first use. Shared by the class and its instances, so it outlives whichever ends first.
class TClassNames {
  public:
    static constexpr std::uint32_t notFound = std::numeric_limits<std::uint32_t>::max();

    /// What is known of one name. References to it stay valid as long as the TClassNames.
    struct TName {
        std::string spelling;  ///< as first used
        std::uint32_t hash = 0;
        /// What instances without a value answer; a null pointer when the name is not declared.
        boost::shared_ptr<TMemoryProperty> unset;
    };

    /// The number of a name, or `notFound`.
    std::uint32_t Find(std::string_view name) const noexcept;
    /// The number of a name, giving it one when it has none yet.
    std::uint32_t Intern(std::string_view name);
    /// As `TMemoryClass::Declare`.
    void Declare(TPropertyDeclaration declaration);

    const TName& Get(std::uint32_t nameId) const { return *names_[nameId]; }
    const std::vector<TPropertyDeclaration>& GetDeclarations() const { return declarations_; }

  private:
    /// A slot of the table: open addressing, linear probing, at most half full.
    struct TSlot {
        std::uint32_t hash = 0;
        std::uint32_t nameId = notFound;
    };

    std::uint32_t FindHashed(std::string_view name, std::uint32_t hash) const noexcept;
    void Insert(TSlot slot) noexcept;
    void Grow();

    std::vector<TSlot> slots_ = std::vector<TSlot>(16);  // a power of two, so that a mask gives the index
    std::vector<std::unique_ptr<TName>> names_;
    std::vector<TPropertyDeclaration> declarations_;
};

}  // namespace NVORHOST
