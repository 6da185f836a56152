#include "simulator/selection.h"

#include "simulator/simulation.h"
#include "simulator/text.h"

namespace simulator {

std::optional<int32_t> selectDevice(int32_t number, const wchar_t* description) {
  Simulation& simulation = Simulation::instance();
  simulation.refresh();
  if (number == -1 && description != nullptr && *description != 0) {
    const std::optional<std::string> text = toUtf8(description);
    number = text ? simulation.findDescription(*text) : -1;
  }
  return number >= 0 && simulation.exists(number) ? std::optional(number) : std::nullopt;
}

}  // namespace simulator
