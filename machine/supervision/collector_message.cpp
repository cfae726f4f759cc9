#include "machine/supervision/collector_message.h"

#include <array>
#include <bit>
#include <cstring>

namespace NVORHOST {
namespace {

using ECimType = TCIMValue::TCIMType::ECIMType;

enum EShape : std::uint64_t { eNull, eScalar, eNullArray, eArray };

EShape ShapeOf(const TCIMValue& value) {
    if (value.IsArray()) {
        return value.IsNull() ? eNullArray : eArray;
    }
    return value.IsNull() ? eNull : eScalar;
}

// A date-time holds numbers only, and the process that reads them is a copy of this one, so its bytes mean
// the same there. The casts show that this is meant, although the type has constructors.
void WriteDateTime(const TCIMDateTime& time, TMessageWriter& message) {
    std::array<char, sizeof(time)> bytes{};
    std::memcpy(bytes.data(), static_cast<const void*>(&time), sizeof(time));
    message.WriteText({bytes.data(), bytes.size()});
}

TCIMDateTime ReadDateTime(TMessageReader& message) {
    TCIMDateTime time;
    const std::string_view bytes = message.ReadText();
    std::memcpy(static_cast<void*>(&time), bytes.data(), std::min(bytes.size(), sizeof(time)));
    return time;
}

void WriteScalar(const TCIMValue& value, TMessageWriter& message) {
    switch (value.GetType()) {
        case ECimType::eBoolean:
            message.WriteNumber(value.GetBoolean() ? 1 : 0);
            break;
        case ECimType::eChar16:
            message.WriteNumber(value.GetChar16());
            break;
        case ECimType::eUint8:
        case ECimType::eUint16:
        case ECimType::eUint32:
        case ECimType::eUint64:
            message.WriteNumber(value.GetUnsigned());
            break;
        case ECimType::eSint8:
        case ECimType::eSint16:
        case ECimType::eSint32:
        case ECimType::eSint64:
            message.WriteNumber(static_cast<std::uint64_t>(value.GetSigned()));
            break;
        case ECimType::eReal32:
        case ECimType::eReal64:
            message.WriteNumber(std::bit_cast<std::uint64_t>(value.GetReal()));
            break;
        case ECimType::eString:
        case ECimType::eReference:
            message.WriteText(std::string(value));
            break;
        case ECimType::eDateTime:
            WriteDateTime(TCIMDateTime(value), message);
            break;
    }
}

TCIMValue ReadScalar(ECimType type, TMessageReader& message) {
    switch (type) {
        case ECimType::eBoolean:
            return TCIMValue(message.ReadNumber() != 0);
        case ECimType::eChar16:
            return TCIMValue(static_cast<char16_t>(message.ReadNumber()));
        case ECimType::eUint8:
            return TCIMValue(static_cast<std::uint8_t>(message.ReadNumber()));
        case ECimType::eUint16:
            return TCIMValue(static_cast<std::uint16_t>(message.ReadNumber()));
        case ECimType::eUint32:
            return TCIMValue(static_cast<std::uint32_t>(message.ReadNumber()));
        case ECimType::eUint64:
            return TCIMValue(message.ReadNumber());
        case ECimType::eSint8:
            return TCIMValue(static_cast<std::int8_t>(message.ReadNumber()));
        case ECimType::eSint16:
            return TCIMValue(static_cast<std::int16_t>(message.ReadNumber()));
        case ECimType::eSint32:
            return TCIMValue(static_cast<std::int32_t>(message.ReadNumber()));
        case ECimType::eSint64:
            return TCIMValue(static_cast<std::int64_t>(message.ReadNumber()));
        case ECimType::eReal32:
            return TCIMValue(static_cast<float>(std::bit_cast<double>(message.ReadNumber())));
        case ECimType::eReal64:
            return TCIMValue(std::bit_cast<double>(message.ReadNumber()));
        case ECimType::eString:
            return {std::string(message.ReadText())};
        case ECimType::eReference:
            return TCIMValue::Reference(std::string(message.ReadText()));
        case ECimType::eDateTime:
            return TCIMValue(ReadDateTime(message));
    }
    return TCIMValue(type);
}

void WriteValue(const TCIMValue& value, TMessageWriter& message) {
    const EShape shape = ShapeOf(value);
    message.WriteNumber(static_cast<std::uint64_t>(static_cast<ECimType>(value.GetType())));
    message.WriteNumber(shape);
    if (shape == eScalar) {
        WriteScalar(value, message);
    } else if (shape == eArray) {
        const auto& elements = static_cast<const TCIMValue::TElements&>(value);
        message.WriteNumber(elements.size());
        for (const TCIMValue& element : elements) {
            WriteValue(element, message);
        }
    }
}

TCIMValue ReadValue(TMessageReader& message) {
    const auto type = static_cast<ECimType>(message.ReadNumber());
    switch (static_cast<EShape>(message.ReadNumber())) {
        case eNull:
            return TCIMValue(type);
        case eScalar:
            return ReadScalar(type, message);
        case eNullArray:
            return TCIMValue::NullArray(type);
        case eArray:
            break;
    }
    TCIMValue::TElements elements;
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        elements.push_back(ReadValue(message));
    }
    return TCIMValue::Array(type, std::move(elements));
}

void WriteTexts(const std::vector<std::string>& texts, TMessageWriter& message) {
    message.WriteNumber(texts.size());
    for (const std::string& text : texts) {
        message.WriteText(text);
    }
}

std::vector<std::string> ReadTexts(TMessageReader& message) {
    std::vector<std::string> texts;
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        texts.emplace_back(message.ReadText());
    }
    return texts;
}

void WriteOptionalText(const std::optional<std::string>& text, TMessageWriter& message) {
    message.WriteNumber(text ? 1 : 0);
    if (text) {
        message.WriteText(*text);
    }
}

std::optional<std::string> ReadOptionalText(TMessageReader& message) {
    return message.ReadNumber() == 0 ? std::nullopt : std::optional(std::string(message.ReadText()));
}

void WriteSource(const TValueSource& source, TMessageWriter& message) {
    message.WriteNumber(static_cast<std::uint64_t>(source.status));
    WriteTexts(source.sources, message);
    message.WriteText(source.passedOver);
    WriteTexts(source.gaps, message);
}

TValueSource ReadSource(TMessageReader& message) {
    TValueSource source;
    source.status = static_cast<EValueStatus>(message.ReadNumber());
    source.sources = ReadTexts(message);
    source.passedOver = message.ReadText();
    source.gaps = ReadTexts(message);
    return source;
}

void WriteSources(const TMemoryInstance& instance, TMessageWriter& message) {
    const auto sources = instance.GetSources();
    message.WriteNumber(sources.size());
    for (const auto& [name, source] : sources) {
        message.WriteText(name);
        WriteSource(source, message);
    }
}

void ReadSources(TMessageReader& message, TMemoryInstance& instance) {
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        const std::string_view name = message.ReadText();
        instance.SetSource(name, ReadSource(message));
    }
}

}  // namespace

void TInstancesWriter::WriteNew(const TCollector& collector, TMessageWriter& message) {
    for (const IClassDeclaration* declaration : collector.fills) {
        const auto filled = source_.FindClass(declaration->GetName());
        const auto& instances = filled->GetInstances();
        std::size_t& written = written_[declaration->GetName()];
        message.WriteNumber(instances.size() - written);
        for (; written < instances.size(); ++written) {
            const auto properties = instances[written]->GetProperties();
            message.WriteNumber(properties.size());
            for (const TPropertyView& property : properties) {
                message.WriteText(property.name);
                WriteValue(property.value, message);
            }
            WriteSources(*instances[written], message);
        }
        message.WriteNumber(filled->GetSource() ? 1 : 0);
        if (filled->GetSource()) {
            WriteSource(*filled->GetSource(), message);
        }
    }
}

void ReadInstances(const TCollector& collector, TMessageReader& message, TMemoryNamespace& target) {
    for (const IClassDeclaration* declaration : collector.fills) {
        const auto filled = target.FindClass(declaration->GetName());
        for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
            const auto instance = filled->NewInstance();
            for (std::uint64_t properties = message.ReadNumber(); properties > 0; --properties) {
                const std::string_view name = message.ReadText();
                instance->Set(name, ReadValue(message));
            }
            ReadSources(message, *instance);
            instance->CommitInstance({});
        }
        if (message.ReadNumber() != 0) {
            filled->SetSource(ReadSource(message));
        }
    }
}

void WriteReport(const TCollectReport& report, TMessageWriter& message) {
    WriteOptionalText(report.failure, message);
    WriteTexts(report.deniedSources, message);
    WriteTexts(report.failedSources, message);
    WriteTexts(report.timedOutSources, message);
    WriteTexts(report.asleepSources, message);
    WriteOptionalText(report.essentialFailure, message);
    WriteTexts(report.notes, message);
    WriteTexts(report.warnings, message);
    for (const std::size_t count : report.values) {
        message.WriteNumber(count);
    }
    message.WriteNumber(report.instances);
    message.WriteNumber(report.replacedBytes);
    message.WriteNumber(static_cast<std::uint64_t>(report.duration.count()));
}

TCollectReport ReadReport(const TCollector& collector, TMessageReader& message) {
    TCollectReport report;
    report.collector = collector.name;
    report.failure = ReadOptionalText(message);
    report.deniedSources = ReadTexts(message);
    report.failedSources = ReadTexts(message);
    report.timedOutSources = ReadTexts(message);
    report.asleepSources = ReadTexts(message);
    report.essentialFailure = ReadOptionalText(message);
    report.notes = ReadTexts(message);
    report.warnings = ReadTexts(message);
    for (std::size_t& count : report.values) {
        count = message.ReadNumber();
    }
    report.instances = message.ReadNumber();
    report.replacedBytes = message.ReadNumber();
    report.duration = std::chrono::nanoseconds(static_cast<std::int64_t>(message.ReadNumber()));
    return report;
}

}  // namespace NVORHOST
