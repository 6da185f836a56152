#include "operations/calibration.h"

#include <velq/velq.h>

#include <array>
#include <cstdio>
#include <cwchar>
#include <string>

#include "operations/elements.h"
#include "operations/library_text.h"
#include "qutil/console.h"

using namespace Automation::Velq;

namespace {

// Quirk: whole seconds, so a section takes a quarter of an hour and more.
constexpr unsigned SectionSeconds = 1000;
constexpr unsigned CodePollSeconds = 200;

// Shared by all items of a calibration. Quirk: where a library writes no code, the one of the item before is shown.
struct ItemState {
  int64_t value = 0;
  int32_t detail = 0;
  std::array<uint32_t, CalibrationCodeCount> codes{};
};

void showCode(uint32_t code, CalibrationState state) {
  wchar_t text[20] = {};
  swprintf(text, std::size(text), L"0X%08X\n", code);
  // Quirk: after the line end that is in `text` already.
  if (state == CalibrationRunning) std::wcscat(text, L", ...");
  // Fifteen characters back: over the spaces behind the name at the first poll, over ", ..." at the others.
  printf("\b\b\b\b\b\b\b\b\b\b\b\b\b\b\b%S", text);
}

void showItem(const Elements<CalibrationItem>& items, int32_t index, ItemState& state) {
  const std::wstring name = nameFrom(CalibrationItem_getName(items[index]));
  bool first = true;
  CalibrationState outcome = CalibrationRunning;
  while (outcome == CalibrationRunning) {
    outcome = CalibrationItem_getState(items[index], &state.value, &state.detail, state.codes.data());
    if (first) printf("%S", (name + L",code                ").c_str());
    first = false;
    showCode(state.codes[0], outcome);
    pauseSeconds(CodePollSeconds);
  }
  if (outcome == CalibrationDone) printf("%S\n", L",OK  ");
  if (outcome == CalibrationFailed) printf("%S\n", L",Failed");
}

// False when the device is busy.
bool runSection(const Elements<CalibrationSection>& sections, int32_t index, ItemState& state) {
  printf("Section %d description:%S\n", index, CalibrationSection_getDescription(sections[index]));
  printf("Section %d instrution:%S\n", index, CalibrationSection_getInstruction(sections[index]));
  // The key is ignored, and so is the status of the start unless the device is busy.
  puts("Press any key to continue");
  getch();
  const ErrorCode status = CalibrationSection_start(sections[index]);
  // Quirk: a busy device is reported only after this pause.
  pauseSeconds(SectionSeconds);
  if (status == ErrorDeviceBusy) return false;
  const Elements<CalibrationItem> items(CalibrationSection_getItems(sections[index]));
  for (int32_t i = 0; i < items.length(); ++i) showItem(items, i, state);
  return true;
}

// Quirk: bits 5 and 7 are ignored, so 0xD9 and 0xF9 are a yes, too. The end of input is a no.
bool isYes(int answer) { return (answer & 0x5F) == 'Y'; }

// False when the device is busy.
bool runSolution(const Elements<CalibrationSolution>& solutions, int32_t index, ItemState& state) {
  printf("Solution %d description:%S\n", index, CalibrationSolution_getDescription(solutions[index]));
  printf("Solution %d instrution:%S\n", index, CalibrationSolution_getInstruction(solutions[index]));
  const Elements<CalibrationSection> sections(CalibrationSolution_getSections(solutions[index]));
  for (int32_t i = 0; i < sections.length(); ++i) {
    if (!runSection(sections, i, state)) return false;
  }
  // Quirk: the number of sections, not that of the solution.
  printf("Solution %d Completed!\n", sections.length());
  puts("Update as current use? (Y/N):");
  if (isYes(readAnswer())) CalibrationSolution_updateAsCurrent(solutions[index]);
  return true;
}

bool nameContains(CalibrationSolution* solution, const wchar_t* text) {
  return nameFrom(CalibrationSolution_getName(solution)).find(text) != std::wstring::npos;
}

void restoreBackup(const Elements<CalibrationSolution>& solutions, int32_t index, bool analogInput,
                   const DeviceInformation& info) {
  if (CalibrationSolution_loadGoldenBackup(solutions[index], 0) != Success) {
    puts("This device operation failed!");
    return;
  }
  // Quirk: silent, unlike a failure of the first step.
  if (CalibrationSolution_loadGoldenBackup(solutions[index], 1) != Success) return;
  printf("Revise %s module adjusting code of device %d(%S) complete!.\n", analogInput ? "AI" : "AO", info.DeviceNumber,
         info.Description);
  CalibrationSolution_updateAsCurrent(solutions[index]);
}

}  // namespace

int startCalibration(CalibrationCtrl* ctrl, const wchar_t* procedure) {
  Array* const array = ctrl == nullptr ? nullptr : CalibrationCtrl_getSolutions(ctrl);
  if (array == nullptr) return -1;
  const Elements<CalibrationSolution> solutions(array);
  ItemState state;
  for (int32_t i = 0; i < solutions.length(); ++i) {
    // Quirk: for each other solution, even if the wanted one follows.
    if (!nameContains(solutions[i], procedure))
      printf("This device can not support the function! ErrorLevel = %d\n", 3);
    else if (!runSolution(solutions, i, state))
      return static_cast<int>(ErrorDeviceBusy);
  }
  return 0;
}

int LoadFromGoldenBackup(CalibrationCtrl* ctrl, bool analogInput, DeviceInformation& info) {
  Array* const array = ctrl == nullptr ? nullptr : CalibrationCtrl_getSolutions(ctrl);
  if (array == nullptr) return -1;
  const Elements<CalibrationSolution> solutions(array);
  for (int32_t i = 0; i < solutions.length(); ++i) {
    if (nameContains(solutions[i], analogInput ? L"AI" : L"AO"))
      restoreBackup(solutions, i, analogInput, info);
    else if (solutions.length() == 1)
      printf("This device do not support the function! ErrorLevel = %d\n", 3);
  }
  return 0;
}
