// The frame of a site's pages: links to the other parts of the site, and when the inventories were made.
#pragma once

#include "fleet/report/site.h"
#include "fleet/report/site_files.h"
#include "inventory/report/html_writer.h"

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace NFLEET {

/// Writes one page of the site. Links are relative to it.
class TSitePage {
  public:
    /// `path` is that of the page; it and `out` must outlive this object.
    TSitePage(std::string_view path, std::ostream& out) : path_(path), html_(out) {}

    NINVENTORY::THtmlWriter& GetHtml() { return html_; }
    [[nodiscard]] NINVENTORY::THtmlWriter::TElement Link(std::string_view path, std::string_view id = {}) {
        return html_.Link(MakeLink(path_, path, id));
    }
    /// Writes a link with text of the report itself.
    void LinkText(std::string_view path, std::string_view text, std::string_view id = {});
    /// Writes a link with a text from inventories.
    void LinkValue(std::string_view path, std::string_view text);
    /// Writes the name of a machine as a link to its page.
    void LinkMachine(const TSiteMachine& machine) {
        LinkValue(GetMachinePath(machine.machine.id), machine.name);
    }
    /// Writes "2026-03-01 03:00".
    void Moment(TSeconds moment);
    /// Writes "03:00".
    void Clock(TSeconds moment);

  private:
    std::string_view path_;
    NINVENTORY::THtmlWriter html_;
};

struct TSitePageHead {
    std::string path;
    std::string title;
    bool hasScript = false;
};

/// Writes a page with its frame.
void WriteSitePage(ISiteFiles& files, const TSite& site, const TSitePageHead& head,
                   const std::function<void(TSitePage& page)>& writeMain);

/// A section with its heading, open as long as this object.
class TSiteSection {
  public:
    TSiteSection(NINVENTORY::THtmlWriter& html, const std::string& id, std::string_view title);

  private:
    NINVENTORY::THtmlWriter::TElement element_;
};

/// Writes the head of a table. A title that begins with "#" is that of a column of numbers.
void WriteColumns(NINVENTORY::THtmlWriter& html, std::initializer_list<std::string_view> titles);

/// Returns "today", "1 day ago" or "12 days ago"; "in the future" for a moment after `now`.
std::string DescribeAge(TSeconds moment, TSeconds now);

/// Returns "256 GiB"; empty if unknown.
std::string ShowMemory(const TMachineFigures& figures);
/// Returns "4 disks, 2.4 TB"; empty if unknown.
std::string ShowDisks(const TMachineFigures& figures);

/// Returns a cell of an answer as people read it; empty if unknown.
std::string ShowCell(const TCell& cell);

}  // namespace NFLEET
