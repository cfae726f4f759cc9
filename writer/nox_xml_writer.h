// Renders a host namespace as a resource-collection document. It exists so that both documents (hardware
// inventory, system information) share one frame, one way of writing a property and one way of naming a
// resource, on whatever stream the caller has.
//
// Failure language of this folder: the writing operations answer true; what the host throws passes to the
// caller unless an operation says otherwise, and leaves the text written so far on the stream. The stream's
// state is never looked at: a failed stream swallows the rest.
#pragma once

#include "host/cim_date_time.h"
#include "host/cim_interfaces.h"
#include "host/cim_value.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

enum class EPropertyForm : unsigned char;
enum class EValueOrigin;
struct TResourceClass;

/// Writes one document onto one stream; made, used for a single entry point and dropped.
/// Shape: every element part is a line of its own, ended by one line feed and one flush of the stream,
///        without indentation. Only property values are escaped; names, identifiers and the values of the
///        summary are written as they come.
/// Arguments travel by value, as these operations are called from other modules too; the work is done by
/// private operations that copy nothing.
class TNOXXMLWriterImpl {
  public:
    using TNamespacePtr = boost::shared_ptr<NKELVOR20::ICIMNamespace>;
    using TInstancePtr = boost::shared_ptr<NKELVOR20::ICIMInstance>;

    /// The stream stays the caller's and must outlive the writer; the writer neither flushes it at the end
    /// nor closes it.
    explicit TNOXXMLWriterImpl(std::ostream& out);
    ~TNOXXMLWriterImpl();
    TNOXXMLWriterImpl(const TNOXXMLWriterImpl&) = delete;
    TNOXXMLWriterImpl& operator=(const TNOXXMLWriterImpl&) = delete;

    /// Set-up and tear-down of the writer's text map. Nothing fills the map, so neither has an effect.
    void InitMap();
    void DeInitMap();

    // ---- documents and their frame (nox_xml_writer.cpp)

    /// Writes the whole hardware-inventory document.
    bool WriteNamespace(TNamespacePtr collected);
    /// Writes the criteria block when `criteriaName` is exactly "NOXSystemInfo", nothing otherwise.
    bool WriteResourceCollectionCriteria(std::string criteriaName, std::string criteriaId,
                                         TNamespacePtr collected);
    /// Writes the context block of "HardwareInventory" or "SystemInfo"; an empty block for any other name.
    bool WriteResourceCollectionContext(std::string contextName, TNamespacePtr collected);
    /// Keeps the place of a status block in the hardware document; writes nothing.
    bool WriteResourceCollectionStatus(TNamespacePtr collected);
    /// Writes one resource list; any type but "PhysicalElement" and "LogicalDevice" gives an empty one.
    bool WriteResourceList(std::string resourceType, TNamespacePtr collected);

    // ---- system information (system_info_document.cpp)

    /// Writes the whole system-information document. No source that fails keeps it from being complete.
    bool WriteSysInfoNamespace(TNamespacePtr collected);
    /// Writes the resource list with the one instance that describes the system.
    bool WriteResourceListForSysInfo(std::string resourceType, TNamespacePtr collected);
    /// Writes one property, without a value element when `value` is empty. Nothing is escaped.
    bool WriteSysInfoProperty(std::string name, std::string value, std::string type);
    /// `Manufacturer` of the single `KELSG_ComputerSystem` instance.
    /// Errors: TVORException with code 15 when there is not exactly one instance; otherwise what the host
    ///         throws for a missing class, property or value.
    static std::string GetUSMIManufacturer(TNamespacePtr collected);
    /// Platform word of a CIM OSType code: "win32", "win64", "linux" or "other".
    static std::string ConvertOSType(unsigned short code);
    /// Display name of a CIM OSType code; "Other" for a code that is not listed.
    static std::string ConvertOSName(unsigned short code);

    // ---- resource instances (resource_instances.cpp)

    /// Writes one element for each instance of `className`, in the order in which the host delivers them,
    /// with the properties that the catalogue lists for the class; nothing for a class that the namespace
    /// lacks or the catalogue does not list. `flag` has no effect.
    /// Errors: TVORException of any code but 15 while the class is looked up is raised anew with its code;
    ///         what is thrown later leaves the element open.
    void WriteResourceInstance(std::string className, std::string resourceType, TNamespacePtr collected,
                               bool flag);

    // ---- properties and values (property_serialisation.cpp)

    /// Writes a property of `instance` under another name. "ObjectType" and "GUID" are written with
    /// `sourceName` as their value, "Name" from "GetHostName" with the operating system's name; the lookup of
    /// `sourceName` follows in these cases too.
    /// Absent: a property that is null, or has a null value, leaves no trace.
    /// Returns false when the instance has no such property (TVORException from the lookup).
    /// Errors: std::out_of_range for a product name too short for its model; what the host throws after the
    ///         lookup. The element's opening line may stand then.
    bool WriteResourceProperty(std::string outputName, std::string sourceName, TInstancePtr instance);
    /// Writes the value lines: one "Value" line, or "VALUE" lines within "VALUE.ARRAY"; none for null.
    void WriteValue(const NKELVOR20::TCIMValue& value);
    /// Character data for the document, which is plain ASCII: &, < and > as entities, line ends dropped,
    /// every other byte outside 0x20 to 0x7F a blank.
    static std::string QuoteString(std::string text);
    /// XML-schema type name of a CIM type name; "string" for a name that is not listed.
    static std::string ConvertTypeFromCIM(std::string cimType);
    /// The up to four characters behind the first "-["; the whole name without one.
    static std::string GetMachineTypeFromCIM(std::string productName);
    /// The up to three characters behind the machine type; the whole name without "-[".
    /// Errors: std::out_of_range when the name ends before them.
    static std::string GetModelNumber(std::string productName);

    // ---- resource identity (resource_identity.cpp, md5.cpp)

    /// The identifier under which one resource is recognised across inventories: 32 hexadecimal digits
    /// made of the type and one key property, or two unless `keyProperty2` is empty. `reserved` is not
    /// looked at.
    /// Absent: a key that cannot be read is logged (level 3) and left out, so such resources of one type
    ///         share an identifier. No exception of the instance or its properties comes out.
    static std::string GetResourceID(std::string resourceType, TInstancePtr instance,
                                     std::string keyProperty1, std::string keyProperty2,
                                     std::string reserved);
    /// Characters of an identifier, or of any digest in text form.
    static constexpr std::size_t digestLength = 32;
    /// MD5 of `length` bytes as 32 upper-case hexadecimal characters in `out`, without a terminator.
    /// Not the standard's digest when `length` is 56 modulo 64 (the padding is one block short), or 512 MiB
    /// and more (the bit count is taken modulo 2^32).
    /// Errors: std::bad_alloc; std::length_error when the padded length is no 32-bit number.
    static void MD5(const char* data, unsigned int length, unsigned char* out);
    /// The compression function of MD5 over the 64 bytes of `block`; updates the chaining words.
    static void transform(const unsigned char* block, std::uint32_t& a, std::uint32_t& b, std::uint32_t& c,
                          std::uint32_t& d);
    /// Writes the four chaining words, each least significant byte first, as 32 upper-case hexadecimal
    /// characters, high nibble first.
    static void toString(const std::uint32_t* digestWords, unsigned char* out);

    // ---- dates (dates.cpp)

    /// "2009-03-07T14:05:09+01:00". Fields are printed as they come, widths are minimums, and the minutes of
    /// the offset are always 00. Offsets below -720 minutes come out as large positive ones.
    static std::string ConvertCIMDateToUSMI(NKELVOR20::TCIMDateTime dateTime);
    /// The host's local time in that form.
    static std::string GetRCFTime();

  private:
    /// A property of the document as one class has it.
    struct TBoundProperty {
        std::string startTag;  // up to the type
        std::string sourceName;
        EPropertyForm form;
    };
    struct TBoundRow {
        TBoundProperty property;
        EValueOrigin origin;  // of the source name
    };
    struct TBoundClass {
        std::string keyProperty;
        std::vector<TBoundRow> properties;
    };

    void WriteDocumentStart(std::string_view timestampAttribute);
    void WriteInstance(const TBoundClass& boundClass, const std::string& resourceType,
                       const TInstancePtr& instance);
    bool WriteProperty(const TBoundProperty& bound, const std::string& sourceName,
                       const TInstancePtr& instance);
    void WriteSpecialForm(const TBoundProperty& bound, std::string_view sourceName);
    void WriteValueLines(EPropertyForm form, NKELVOR20::ICIMProperty& property,
                         NKELVOR20::TCIMValue::TCIMType type, const NKELVOR20::TCIMValue& value);
    /// A whole string property whose value is not escaped. `getText` is called after the opening line is
    /// written.
    template <typename TGetText>
    void WriteTextProperty(std::string_view startTag, TGetText getText) {
        WriteLine(startTag, R"(string">)");
        WriteLine("<Value>", getText(), "</Value>");
        WriteLine("</Property>");
    }
    /// A line of one value between the tags of TTags.
    template <typename TTags>
    void WriteEscapedLine(std::string_view text);

    /// Writes the pieces, each convertible to std::string_view, as one line: one write, one flush.
    template <typename... TPieces>
    void WriteLine(const TPieces&... pieces) {
        char* to = MakeLineRoom((std::string_view(pieces).size() + ... + 1));
        ((to += std::string_view(pieces).copy(to, std::string_view::npos)), ...);
        *to++ = '\n';
        FinishLine(to);
    }
    char* MakeLineRoom(std::size_t size) {
        if (line_.size() < size) {
            line_.resize(2 * size);
        }
        return line_.data();
    }
    void FinishLine(const char* end);
    void MarkBad();
    /// Writes the text at once, without ending the line.
    void WritePiece(std::string_view text);

    static TBoundProperty BindProperty(std::string_view outputName, std::string sourceName);
    static TBoundClass BindClass(const TResourceClass& resourceClass);
    static std::vector<TInstancePtr> ListInstances(NKELVOR20::ICIMClass& cimClass);
    static std::string MakeResourceID(const std::string& resourceType, const TInstancePtr& instance,
                                      const std::string& keyProperty1, const std::string& keyProperty2);
    static std::string DigestKey(const std::string& key);
    static std::string MakeSysInfoResourceID(std::string_view resourceType, std::string_view machineType,
                                             std::string_view serialNumber);

    std::ostream& out_;
    TNamespacePtr namespace_;                   // nothing fills it
    std::map<std::string, std::string> texts_;  // nothing fills it
    std::vector<char> line_;                    // kept from line to line, so that a line costs no allocation
};
