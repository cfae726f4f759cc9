// The frame of every page: its head with the policy and the style sheet, and the beginning of its body.
#pragma once

#include "inventory/report/html_writer.h"

#include <functional>
#include <string_view>

namespace NINVENTORY {

/// Writes a page. `writeMain` writes the content of its main element.
void WritePage(THtmlWriter& html, std::string_view title, const std::function<void()>& writeMain);

}  // namespace NINVENTORY
