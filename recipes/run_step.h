// SPDX-License-Identifier: MIT
#ifndef RENDAL_RECIPES_RUN_STEP_H_
#define RENDAL_RECIPES_RUN_STEP_H_

#include <optional>
#include <vector>

#include "recipes/recipe.h"
#include "tools/status.h"
#include "tools/workbench.h"

namespace rendal {

// What a step left besides the workbench's own state.
struct StepReport {
  Status status;  // what the status label has to show
  // New rows of the region list; without a value it stays as it is.
  std::optional<std::vector<FeatureRow>> rows;
  std::optional<MeasureReport> measured;
  std::optional<LineReport> line;
};

// Does what the step's button does, by the same tool: pictures, messages,
// console lines and numbers are those of a press. A measurement makes its
// region of interest and its tool mode current first. Throws what the tool
// throws (out of memory), with the workbench's results as before.
StepReport RunStep(const Step& step, Workbench& workbench);

}  // namespace rendal

#endif  // RENDAL_RECIPES_RUN_STEP_H_
