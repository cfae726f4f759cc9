// The interface of the writer: renders a host namespace as a resource-collection document on any stream. The
// operations only forward to the engine in the other files of this folder.
//
// Failure language of this folder: writing operations return true; exceptions from the host pass to the
// caller unless an operation documents otherwise, and leave the text written so far on the stream. The state
// of the stream is never checked: a failed stream swallows the rest of the document.
#pragma once

#include "host/cim_date_time.h"
#include "host/cim_interfaces.h"
#include "host/cim_value.h"
#include "writer/catalogue/md5.h"
#include "writer/line_output.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>

/// Writes one document onto one stream: construct it, call a single entry point, destroy it.
/// Shape: every element part is a line of its own, ended by a line feed and a flush of the stream, without
///        indentation. Only property values are escaped; names, identifiers and the values of the system
///        information are not.
/// Arguments are passed by value, because other modules may call these operations.
class TNOXXMLWriterImpl {
  public:
    using TNamespacePtr = boost::shared_ptr<NKELVOR20::ICIMNamespace>;
    using TInstancePtr = boost::shared_ptr<NKELVOR20::ICIMInstance>;

    /// `out` is non-owning and must outlive the writer, which neither flushes it at the end nor closes it.
    explicit TNOXXMLWriterImpl(std::ostream& out);
    ~TNOXXMLWriterImpl();
    TNOXXMLWriterImpl(const TNOXXMLWriterImpl&) = delete;
    TNOXXMLWriterImpl& operator=(const TNOXXMLWriterImpl&) = delete;

    /// Set-up and tear-down of the writer's text map. Neither has an effect: nothing fills the map.
    void InitMap();
    void DeInitMap();

    /// Writes the whole hardware-inventory document.
    bool WriteNamespace(TNamespacePtr collected);
    /// Writes the criteria block if `criteriaName` is exactly "NOXSystemInfo", nothing otherwise.
    bool WriteResourceCollectionCriteria(std::string criteriaName, std::string criteriaId,
                                         TNamespacePtr collected);
    /// Writes the context block of "HardwareInventory" or "SystemInfo", an empty block for any other name.
    bool WriteResourceCollectionContext(std::string contextName, TNamespacePtr collected);
    /// Writes nothing: the documents have no status block.
    bool WriteResourceCollectionStatus(TNamespacePtr collected);
    /// Writes one resource list; an empty one for any type but "PhysicalElement" and "LogicalDevice".
    bool WriteResourceList(std::string resourceType, TNamespacePtr collected);

    /// Writes the whole system-information document. A source that fails leaves its value empty.
    bool WriteSysInfoNamespace(TNamespacePtr collected);
    /// Writes the resource list with the one instance that describes the system.
    bool WriteResourceListForSysInfo(std::string resourceType, TNamespacePtr collected);
    /// Writes one property, without a value element if `value` is empty. Nothing is escaped.
    bool WriteSysInfoProperty(std::string name, std::string value, std::string type);
    /// Returns `Manufacturer` of the single `KELSG_ComputerSystem` instance.
    /// Errors: TVORException with code 15 unless there is exactly one instance; otherwise what the host
    ///         throws for a missing class, property or value.
    static std::string GetUSMIManufacturer(TNamespacePtr collected);
    /// Maps a CIM OSType code to a platform: "win32", "win64", "linux" or "other".
    static std::string ConvertOSType(unsigned short code);
    /// Maps a CIM OSType code to a display name; "Other" for an unlisted code.
    static std::string ConvertOSName(unsigned short code);

    /// Writes one element for each instance of `className`, in the order in which the host enumerates them,
    /// with the properties that the catalogue lists for the class. `flag` has no effect.
    /// Absent: nothing is written for a class that the namespace lacks or the catalogue does not list.
    /// Errors: a TVORException of another code than 15 from the class lookup is thrown anew with its code;
    ///         exceptions thrown later leave the element open.
    void WriteResourceInstance(std::string className, std::string resourceType, TNamespacePtr collected,
                               bool flag);

    /// Writes the property `sourceName` of `instance` under the name `outputName`. For "ObjectType" and
    /// "GUID" an element with `sourceName` as its value is written first; for "Name" from "GetHostName" one
    /// with the operating system's name. The lookup of `sourceName` follows in these cases too.
    /// Absent: nothing is written for a property that is null or has a null value. Returns false if the
    ///         instance has no such property (TVORException from the lookup).
    /// Errors: std::out_of_range for a product name that ends before its model number; exceptions from the
    ///         host after the lookup. The element may then be left open.
    bool WriteResourceProperty(std::string outputName, std::string sourceName, TInstancePtr instance);
    /// Writes one "Value" line for a scalar, "VALUE" lines within "VALUE.ARRAY" for an array, nothing for
    /// null.
    void WriteValue(const NKELVOR20::TCIMValue& value);
    /// Returns `text` as character data, which is plain ASCII: &, < and > become entities, line ends are
    /// dropped, and every other byte outside 0x20 to 0x7F becomes a blank.
    static std::string QuoteString(std::string text);
    /// Maps a CIM type name to an XML-schema type name; "string" for an unlisted name.
    static std::string ConvertTypeFromCIM(std::string cimType);
    /// Returns the up to four characters after the first "-["; the whole name if it has no "-[".
    static std::string GetMachineTypeFromCIM(std::string productName);
    /// Returns the up to three characters after the machine type; the whole name if it has no "-[".
    /// Errors: throws std::out_of_range if the name ends within the machine type.
    static std::string GetModelNumber(std::string productName);

    /// Returns the identifier of a resource across inventories: 32 hexadecimal digits made from its type and
    /// the value of one key property, or of two if `keyProperty2` is not empty. `reserved` is ignored.
    /// Absent: a key that cannot be read is left out, after a line in the log (level 3). Such resources of
    ///         one type share an identifier. Exceptions of the instance and its properties are caught.
    static std::string GetResourceID(std::string resourceType, TInstancePtr instance,
                                     std::string keyProperty1, std::string keyProperty2,
                                     std::string reserved);
    /// The number of characters of an identifier, or of any digest in text form.
    static constexpr std::size_t digestLength = digestTextLength;
    /// Writes the MD5 digest of `length` bytes as 32 upper-case hexadecimal characters, without a terminator.
    /// The result differs from standard MD5 if `length` is 56 modulo 64, and from 512 MiB on.
    /// Errors: std::bad_alloc; std::length_error if the padded length does not fit 32 bits.
    static void MD5(const char* data, unsigned int length, unsigned char* out);
    /// The compression function of MD5: updates the chaining words with the 64 bytes of `block`.
    static void transform(const unsigned char* block, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                          std::uint32_t& d);
    /// Writes the four chaining words, each least significant byte first, as 32 upper-case hexadecimal
    /// characters, high nibble first.
    static void toString(const std::uint32_t* digestWords, unsigned char* out);

    /// Returns for example "2009-03-07T14:05:09+01:00". Fields are not range-checked, their widths are
    /// minimums, and the minutes of the offset are always 00. An offset below -720 minutes comes out as a
    /// large positive one.
    static std::string ConvertCIMDateToUSMI(NKELVOR20::TCIMDateTime dateTime);
    /// Returns the host's local time in that form.
    static std::string GetRCFTime();

  private:
    TLineOutput output_;
    TNamespacePtr namespace_;                   // never set
    std::map<std::string, std::string> texts_;  // never filled
};
