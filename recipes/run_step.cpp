// SPDX-License-Identifier: MIT
#include "recipes/run_step.h"

#include <utility>

namespace rendal {
namespace {

class StepRunner {
 public:
  explicit StepRunner(Workbench& workbench) : m_workbench(workbench) {}

  StepReport operator()(const ThresholdStep& step) const {
    return {Threshold(m_workbench, step.band), {}, {}, {}};
  }
  StepReport operator()(const OperationStep& step) const {
    return {ApplyRegionOperation(m_workbench, step.operation, step.parameters,
                                 step.source),
            {},
            {},
            {}};
  }
  StepReport operator()(const ConnectionStep& step) const {
    return Take(Connection(m_workbench, step.parameters));
  }
  StepReport operator()(const SelectStep& step) const {
    return Take(SelectComponents(m_workbench, step.selection));
  }
  StepReport operator()(const MeasureStep& step) const {
    m_workbench.m_toolMode = step.roi.kind;
    *m_workbench.CurrentShape() = step.roi;
    m_workbench.m_bandWidth = step.parameters.width;
    return {{}, {}, Measure(m_workbench, step.parameters), {}};
  }
  StepReport operator()(const FindLineStep& step) const {
    return {{}, {}, {}, FindLine(m_workbench, step.display)};
  }

 private:
  static StepReport Take(ConnectionReport report) {
    return {std::move(report.status), std::move(report.rows), {}, {}};
  }

  Workbench& m_workbench;
};

}  // namespace

StepReport RunStep(const Step& step, Workbench& workbench) {
  return std::visit(StepRunner(workbench), step);
}

}  // namespace rendal
