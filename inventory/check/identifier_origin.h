// Where the identifier of a resource comes from.
#pragma once

#include "inventory/model/resource.h"

#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// The source of the value of a key.
enum class EKeyOrigin {
    systemUuid,     ///< the UUID that firmware keeps on the board
    uuid,           ///< a UUID of the device or of its content
    worldWideName,  ///< a name that is unique in the world: NAA, EUI-64, NGUID
    serialNumber,   ///< the serial number, which is also a property
    address,        ///< the permanent address of a network port
    position,       ///< the PCI address and the ports from there
    label,          ///< the name that the firmware gives the place, such as a slot's
    number,         ///< kind and number, where the firmware does not name the place
    mountPoint,     ///< the directory that a file system is mounted on
    table,          ///< the identity of a partition table, and the number of the partition
    name,           ///< a name that people or the system give
    identity,       ///< another text that the device reports
    none,           ///< the key has no value
};

struct TIdentifierOrigin {
    std::string key;          ///< the text that was digested
    std::string className;    ///< empty for a type without a class
    std::string keyProperty;  ///< its name in the namespace
    std::string keyValue;     ///< empty if there is none
    EKeyOrigin origin = EKeyOrigin::none;
    /// Identities that come first for its type, such as "world-wide name", but were not used.
    std::vector<std::string_view> passedOver{};
    bool hasUnit = false;  ///< the number of a unit of the device was appended to its identity
    /// Words for the key of another resource that this key was made from, such as that of the disk of a
    /// partition; `origin` is that of the other key then. Empty if the key is its own.
    std::string_view borrowed{};
    bool isCollisionResolved = false;  ///< the position was appended, because others have the same identity
    bool isNumbered = false;           ///< a number was appended, because others are equal
    bool isCut = false;                ///< too long for a key, so that its end is a digest
    bool hasShortPadding = false;      ///< other programs' MD5 of the key differs
    bool isConfirmed = false;          ///< the digest of the key is the resource's identifier
};

/// Explains the identifier of a resource from its properties.
TIdentifierOrigin ExplainIdentifier(const TResource& resource);

/// The consequences of the origin of a key, in words for people.
struct TOriginText {
    EKeyOrigin origin;
    std::string_view madeFrom;
    std::string_view ifMoved;          ///< the part is put into another place
    std::string_view ifBoardReplaced;  ///< everything else is put on another board
    std::string_view ifRenamed;        ///< the system gives its devices other names
};

/// Returns the row of an origin.
const TOriginText& GetOriginText(EKeyOrigin origin);

}  // namespace NINVENTORY
