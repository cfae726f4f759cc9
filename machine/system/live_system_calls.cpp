#include "machine/system/live_system_calls.h"

#include "machine/system/system_files.h"
#include "os/file_descriptor.h"

#include <fcntl.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/auxv.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <system_error>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>

#include <array>
#include <cstring>
#endif

namespace NVORHOST {
namespace {

std::optional<utsname> ReadUname() {
    utsname names{};
    if (uname(&names) != 0) {
        return std::nullopt;
    }
    return names;
}

// getauxval returns 0 for an entry that the kernel did not pass.
std::optional<std::uint32_t> ReadAuxiliaryValue(unsigned long type) {
    const unsigned long value = getauxval(type);
    return value == 0 ? std::nullopt : std::optional(static_cast<std::uint32_t>(value));
}

template <typename TAddress>
std::string BytesOf(const TAddress& address) {
    return {reinterpret_cast<const char*>(&address), sizeof(address)};  // NOLINT(*-reinterpret-cast)
}

// Returns the bytes of the address; nullopt for addresses of other families.
std::optional<std::string> FindAddress(const sockaddr* address) {
    if (address == nullptr) {
        return std::nullopt;
    }
    // The family determines the type of the structure.
    switch (address->sa_family) {
        case AF_INET:
            return BytesOf(reinterpret_cast<const sockaddr_in*>(address)->sin_addr);  // NOLINT(*-cast)
        case AF_INET6:
            return BytesOf(reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr);  // NOLINT(*-cast)
        default:
            return std::nullopt;
    }
}

// Returns the name of the interface in a label such as "eth0:1", which an IPv4 address may have.
std::string InterfaceOf(std::string_view label) {
    return std::string(label.substr(0, label.find(':')));
}

// Without room for a descriptor or memory, the answer is not "none": the run fails.
void RefuseExhaustion(std::string_view what) {
    if (IsExhaustion(errno)) {
        throw TResourcesExhausted(std::string(what) + ": " + std::generic_category().message(errno));
    }
}

struct TFreeAddresses {
    void operator()(ifaddrs* addresses) const { freeifaddrs(addresses); }
};

}  // namespace

std::optional<std::string> TLiveSystemCalls::ReadKernelRelease() const {
    const auto names = ReadUname();
    return names ? std::optional<std::string>(names->release) : std::nullopt;
}

std::optional<std::string> TLiveSystemCalls::ReadNodeName() const {
    const auto names = ReadUname();
    return names ? std::optional<std::string>(names->nodename) : std::nullopt;
}

std::optional<std::string> TLiveSystemCalls::ReadArchitecture() const {
    const auto names = ReadUname();
    return names ? std::optional<std::string>(names->machine) : std::nullopt;
}

std::optional<std::uint32_t> TLiveSystemCalls::ReadPageSizeBytes() const {
    return ReadAuxiliaryValue(AT_PAGESZ);
}

std::optional<std::uint32_t> TLiveSystemCalls::ReadClockTicksPerSecond() const {
    return ReadAuxiliaryValue(AT_CLKTCK);
}

std::optional<std::string> TLiveSystemCalls::ReadHypervisorSignature() const {
#if defined(__x86_64__) || defined(__i386__)
    constexpr unsigned int runsUnderHypervisor = 1U << 31;  // leaf 1, ECX
    std::array<unsigned int, 4> registers{};
    if (__get_cpuid(1, &registers[0], &registers[1], &registers[2], &registers[3]) == 0 ||
        (registers[2] & runsUnderHypervisor) == 0) {
        return std::nullopt;
    }
    // __get_cpuid rejects this leaf because it is above the highest basic leaf.
    __cpuid(0x40000000U, registers[0], registers[1], registers[2], registers[3]);
    std::array<char, 13> signature{};
    std::memcpy(signature.data(), &registers[1], 12);
    std::string text(signature.data(), 12);
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
#else
    return std::nullopt;
#endif
}

std::optional<int> TLiveSystemCalls::ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const {
    const std::time_t moment = secondsSinceEpoch;
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) {
        return std::nullopt;
    }
    return static_cast<int>(local.tm_gmtoff / 60);
}

std::optional<std::vector<TInterfaceAddress>> TLiveSystemCalls::ReadInterfaceAddresses() const {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) {
        RefuseExhaustion("addresses of the interfaces");
        return std::nullopt;
    }
    const std::unique_ptr<ifaddrs, TFreeAddresses> owner(first);
    std::vector<TInterfaceAddress> addresses;
    for (const ifaddrs* row = first; row != nullptr; row = row->ifa_next) {
        if (auto address = FindAddress(row->ifa_addr)) {
            addresses.push_back({InterfaceOf(row->ifa_name), std::move(*address)});
        }
    }
    return addresses;
}

std::optional<TFileSystemSpace> TLiveSystemCalls::ReadFileSystemSpace(std::string_view mountPoint) const {
    // O_PATH opens neither the file system nor a device, and triggers no automount.
    const TFileDescriptor place(::open(std::string(mountPoint).c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct statvfs space {};
    if (!place.IsOpen() || ::fstatvfs(place.Get(), &space) != 0) {
        RefuseExhaustion(mountPoint);
        return std::nullopt;
    }
    const std::uint64_t blockSize = space.f_frsize;
    return TFileSystemSpace{blockSize, blockSize * space.f_blocks, blockSize * space.f_bavail};
}

}  // namespace NVORHOST
