// The frame of every page: its head with the policy and the style sheet, and the beginning of its body.
#pragma once

#include "inventory/report/html_writer.h"

#include <functional>
#include <string_view>

namespace NINVENTORY {

/// A constant style sheet or script, and the SHA-256 digest of its bytes in Base64, by which the policy of a
/// page allows it.
struct TInlineText {
    std::string_view text;
    std::string_view digest;
};

struct TPageFrame {
    std::string_view title;
    const TInlineText* style = nullptr;   ///< follows the style sheet of every page; null for none
    const TInlineText* script = nullptr;  ///< runs at the end of the page; null for none
};

/// Writes a page. `writeMain` writes the content of its main element, `writeHeader` and `writeFooter` what
/// comes before and after that.
void WritePage(THtmlWriter& html, const TPageFrame& frame, const std::function<void()>& writeHeader,
               const std::function<void()>& writeMain, const std::function<void()>& writeFooter);

/// Writes a page. `writeMain` writes the content of its main element.
void WritePage(THtmlWriter& html, std::string_view title, const std::function<void()>& writeMain);

}  // namespace NINVENTORY
