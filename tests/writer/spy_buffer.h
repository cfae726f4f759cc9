// A stream buffer that shows when it was flushed.
#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

/// Keeps the text, and at every flush what was written since the one before.
class TSpyBuffer final : public std::stringbuf {
  public:
    std::vector<std::string> flushes;

  protected:
    int sync() override {
        const std::string text = str();
        flushes.push_back(text.substr(flushed_));
        flushed_ = text.size();
        return 0;
    }

  private:
    std::size_t flushed_ = 0;
};
