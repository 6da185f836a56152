#include <algorithm>

#include "simulator/library/firmware_file.h"
#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"
#include "text/utf8.h"

namespace simulator {

using namespace Automation::Velq;

namespace {

// A version that is no number is older than every file.
bool isNewer(uint16_t version, const FirmwareVersion& than) {
  const auto* const number = std::get_if<uint16_t>(&than);
  return number == nullptr || version > *number;
}

// Whether the chip accepts the password; one without a password accepts any.
bool isPassword(const Chip& chip, const wchar_t* given) {
  return !chip.password || (given != nullptr && text::fromUtf8(*chip.password) == given);
}

// The last step of an overwrite. A version that could not be saved leaves it unfinished, and the next poll tries again.
bool saveVersion(ChipObject& chip) {
  const int32_t number = chip.device.number;
  const ErrorCode status = Simulation::instance().change([&](std::vector<StateChange>& changes) {
    changes.push_back({number, firmwareItem(chip.index), int64_t{chip.loadedVersion.value()}});
    return Success;
  });
  return status == Success;
}

}  // namespace

Array* FirmwareCtrls_getFirmwares(FirmwareCtrls* control) {
  return controlItems<ChipObject>(control, __func__, ScenarioFirmware, &Device::firmware);
}

const wchar_t* FirmwareItem_getDescription(FirmwareItem* item) {
  return internedWide(resolve<ChipObject>(item, __func__).inRig.description);
}

const wchar_t* FirmwareItem_getVersion(FirmwareItem* item) {
  const ChipObject& chip = resolve<ChipObject>(item, __func__);
  return internedWide(shown(Simulation::instance().firmwareVersion(chip.device.number, chip.index)));
}

const wchar_t* FirmwareItem_getNotice(FirmwareItem* item) {
  return internedWide(resolve<ChipObject>(item, __func__).inRig.notice);
}

ErrorCode FirmwareItem_confirmNotice(FirmwareItem* item) {
  resolve<ChipObject>(item, __func__).noticeConfirmed = true;
  return Success;
}

ErrorCode FirmwareItem_loadFile(FirmwareItem* item, const wchar_t* path) {
  ChipObject& chip = resolve<ChipObject>(item, __func__);
  Simulation& simulation = Simulation::instance();
  const int32_t number = chip.device.number;
  // A file cannot be replaced while it is written to the chip.
  if (chip.polls && !chip.finished) return ErrorWrongOrder;
  // After a failed load there is nothing to start, whether or not a file was loaded before.
  chip.polls.reset();
  chip.loadedVersion.reset();
  if (const ErrorCode status = simulation.checkFree(number); status != Success) return status;
  FirmwareFile file{};
  const std::optional<std::string> narrowPath = text::toUtf8(path);
  const ErrorCode status = narrowPath ? readFirmwareFile(*narrowPath, file) : ErrorFileUnreadable;
  if (status != Success) return status;
  if (file.product != simulation.productId(number)) return ErrorFirmwareWrongDevice;
  chip.loadedVersion = file.version;
  return isNewer(file.version, simulation.firmwareVersion(number, chip.index)) ? Success : WarningFirmwareNotNewer;
}

ErrorCode FirmwareItem_start(FirmwareItem* item, int32_t /*mode*/, const wchar_t* password) {
  ChipObject& chip = resolve<ChipObject>(item, __func__);
  // The notice is part of the procedure: a tool that skips it is refused.
  if (!chip.loadedVersion || !chip.noticeConfirmed) return ErrorWrongOrder;
  if (!isPassword(chip.inRig, password)) return ErrorRefused;
  // Held until the control is disposed of: a tool that stops polling does not say so.
  if (const ErrorCode status = chip.owner.hold(chip.device.number); status != Success) return status;
  chip.finished = false;
  chip.polls = 0;
  return Success;
}

int32_t FirmwareItem_getProgress(FirmwareItem* item) {
  ChipObject& chip = resolve<ChipObject>(item, __func__);
  if (!chip.polls) return ProgressNothingLoaded;
  const std::vector<int32_t>& progress = chip.inRig.progress;
  const int32_t value = progress[std::min(*chip.polls, progress.size() - 1)];
  // The version is saved before 100 is returned, because tools report success then.
  if (value >= ProgressDone && !chip.finished && !(chip.finished = saveVersion(chip))) return ProgressAborted;
  ++*chip.polls;
  return value;
}

}  // namespace simulator
