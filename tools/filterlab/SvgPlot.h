#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "Replay.h"

namespace filterlab {

// Input and filtered output over time as a standalone SVG document.
class SvgPlot {
public:
    enum class Scale { kLinear, kLog };

    SvgPlot(std::string title, std::string valueLabel, std::string outputLabel, Scale scale);
    void write(std::ostream& out, const std::vector<Point>& points) const;

private:
    std::string mTitle;
    std::string mValueLabel;
    std::string mOutputLabel;
    Scale mScale;
};

}  // namespace filterlab
