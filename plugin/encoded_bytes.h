// Encodes the hardware file for a string property.
#pragma once

#include "plugin/noxinfo_plugin_callbacks.h"

#include <memory>
#include <string_view>

/// Returns the bytes as NUL-terminated Base64 text, made by the encoder of `plugin`.
/// Absent: null, after one log line (level 3), if there is no memory for the text, or if the number of bytes
///         or of characters exceeds the encoder's 32-bit counts.
/// Errors: only exceptions of the logger.
std::unique_ptr<char[]> EncodeBytes(TNoxinfoPluginCallbacks& plugin, std::string_view bytes);
