#include "inventory/check/problem_writer.h"

#include "text/shown_text.h"
#include "text/utf8.h"

#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/writer.h>

namespace NINVENTORY {
namespace {

class TProblemLines final : public IProblemWriter {
  public:
    explicit TProblemLines(std::ostream& out) : out_(out) {}

    void Add(const std::string& source, const TProblem& problem) override {
        const std::string line = problem.line > 0 ? ":" + std::to_string(problem.line) : "";
        out_ << NVORHOST::MakeVisible(source) << line << ": " << NVORHOST::MakeVisible(problem.text) << '\n';
    }
    void Finish() override {}

  private:
    std::ostream& out_;
};

class TProblemJson final : public IProblemWriter {
  public:
    explicit TProblemJson(std::ostream& out) : stream_(out), json_(stream_), out_(out) {
        json_.StartObject();
        json_.Key("problems");
        json_.StartArray();
    }

    void Add(const std::string& source, const TProblem& problem) override {
        json_.StartObject();
        WriteText("source", source);
        if (problem.line > 0) {
            json_.Key("line");
            json_.Int(problem.line);
        }
        if (!problem.resourceId.empty()) {
            WriteText("resourceId", problem.resourceId);
        }
        WriteText("problem", problem.text);
        json_.EndObject();
    }
    void Finish() override {
        json_.EndArray();
        json_.EndObject();
        out_ << '\n';
    }

  private:
    void WriteText(const char* name, const std::string& text) {
        json_.Key(name);
        const std::string wellFormed = NVORHOST::ReplaceMalformedUtf8(text).value_or(text);
        json_.String(wellFormed.data(), static_cast<rapidjson::SizeType>(wellFormed.size()));
    }

    rapidjson::OStreamWrapper stream_;
    rapidjson::Writer<rapidjson::OStreamWrapper> json_;
    std::ostream& out_;
};

}  // namespace

std::unique_ptr<IProblemWriter> MakeProblemLines(std::ostream& out) {
    return std::make_unique<TProblemLines>(out);
}

std::unique_ptr<IProblemWriter> MakeProblemJson(std::ostream& out) {
    return std::make_unique<TProblemJson>(out);
}

}  // namespace NINVENTORY
