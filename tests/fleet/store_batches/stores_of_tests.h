// New, empty stores of every engine.
#pragma once

#include "fleet/store/fleet_store.h"

#include <memory>
#include <string>
#include <vector>

namespace NFLEET {

/// A place where one store is, which is removed with this object at the latest.
class ITestPlace {
  public:
    virtual ~ITestPlace() = default;

    /// Opens the store; several may be open.
    virtual std::unique_ptr<IFleetStore> Open() const = 0;
};

/// An engine.
class TTestEngine {
  public:
    using TMakePlace = std::unique_ptr<ITestPlace> (*)();

    TTestEngine(std::string name, TMakePlace makePlace) : name_(std::move(name)), makePlace_(makePlace) {}

    const std::string& GetName() const { return name_; }
    /// Returns the place of a store without tables.
    std::unique_ptr<ITestPlace> MakePlace() const { return makePlace_(); }

  private:
    std::string name_;
    TMakePlace makePlace_;
};

/// Returns all engines.
const std::vector<const TTestEngine*>& GetTestEngines();

}  // namespace NFLEET
