#include "sending/transfer.h"

#include "os/module.h"
#include "sending/transfer_module_entry.h"

#include <stdexcept>
#include <utility>

namespace NVORHOST {
namespace {

TTransferEntry LoadEntry() {
    try {
        return LoadFunction<TTransferEntry>(
            FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_TRANSFER_MODULE), transferEntryName);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("the sender cannot be loaded: ") + error.what());
    }
}

}  // namespace

std::unique_ptr<ITransfer> OpenTransfer(TTransferCredentials credentials) {
    std::unique_ptr<ITransfer> transfer;
    LoadEntry()(std::move(credentials), transfer);
    return transfer;
}

}  // namespace NVORHOST
