// A fleet of machines of twenty models: the document of one machine with other identities, volatile values
// and models.
#pragma once

#include <string>
#include <vector>

/// Makes the documents of a fleet, always the same ones.
class TMadeFleet {
  public:
    /// Takes a hardware document apart.
    explicit TMadeFleet(const std::string& document);

    /// Returns the document of a machine on a day. Two of a hundred machines have another disk from each day
    /// on.
    std::string MakeDocument(unsigned machine, unsigned day) const;

  private:
    enum class EKind { text, timestamp, identifier, uuid, identity, disk, counter, model };

    struct TPiece {
        EKind kind;
        std::string text;
    };

    void AddLine(const std::string& line);
    void AddServer();
    void AddValue(EKind kind, const std::string& line);

    std::vector<TPiece> pieces_;
    std::string type_;
    std::string property_;
    unsigned resources_ = 0;
    bool hasDisk_ = false;
};
