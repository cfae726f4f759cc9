// The hardware file in the form of a string property.
#pragma once

#include "plugin/noxinfo_plugin_callbacks.h"

#include <memory>
#include <string_view>

/// The bytes as NUL-terminated Base64 text, made by the encoder of `plugin`.
/// Absent: null, after one log line of level 3, when there is no memory for the text, or when the number of
/// bytes or
///         of characters is too large for the encoder's 32-bit counts. Nothing is thrown but by the logger.
std::unique_ptr<char[]> EncodeBytes(TNoxinfoPluginCallbacks& plugin, std::string_view bytes);
