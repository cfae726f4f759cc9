// A stream buffer that records its flushes.
#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

/// Keeps the text, and for each flush the part of it that was written since the previous one.
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
