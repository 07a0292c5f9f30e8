#include "SvgPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace filterlab {

namespace {

constexpr double kWidth = 960;
constexpr double kHeight = 540;
constexpr double kLeft = 80;
constexpr double kRight = 30;
constexpr double kTop = 50;
constexpr double kBottom = 95;
constexpr char kInputColour[] = "#9a9a9a";
constexpr char kOutputColour[] = "#1f5fbf";

std::string escape(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string num(double v) {
    char buf[32];
    snprintf(buf, sizeof(buf), "%.2f", v);
    return buf;
}

std::string label(double v) {
    char buf[32];
    snprintf(buf, sizeof(buf), "%g", v);
    return buf;
}

// Steps of 1, 2 or 5 times a power of ten giving at most about `count` ticks over `span`.
double niceStep(double span, int count) {
    if (span <= 0) return 1;
    double raw = span / count;
    double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    for (double m : {1.0, 2.0, 5.0, 10.0}) {
        if (m * magnitude >= raw) return m * magnitude;
    }
    return 10 * magnitude;
}

// Log scale maps v to log10(1 + v) so that zero lux stays on the chart.
double transform(double v, SvgPlot::Scale scale) {
    if (scale == SvgPlot::Scale::kLinear) return v;
    return std::log10(1.0 + std::max(v, 0.0));
}

}  // namespace

SvgPlot::SvgPlot(std::string title, std::string valueLabel, std::string outputLabel, Scale scale)
    : mTitle(std::move(title)),
      mValueLabel(std::move(valueLabel)),
      mOutputLabel(std::move(outputLabel)),
      mScale(scale) {}

void SvgPlot::write(std::ostream& out, const std::vector<Point>& points) const {
    double t0 = points.empty() ? 0 : points.front().ms / 1000.0;
    double t1 = points.empty() ? 1 : points.back().ms / 1000.0;
    if (t1 <= t0) t1 = t0 + 1;
    double vMin = 0;
    double vMax = 1;
    for (const Point& p : points) {
        vMin = std::min({vMin, p.input, p.output});
        vMax = std::max({vMax, p.input, p.output});
    }
    if (mScale == Scale::kLog) vMin = 0;
    double y0 = transform(vMin, mScale);
    double y1 = transform(vMax, mScale);
    y1 += (y1 - y0) * 0.05;

    const double plotW = kWidth - kLeft - kRight;
    const double plotH = kHeight - kTop - kBottom;
    auto px = [&](double seconds) { return kLeft + (seconds - t0) / (t1 - t0) * plotW; };
    auto py = [&](double v) {
        return kTop + plotH - (transform(v, mScale) - y0) / (y1 - y0) * plotH;
    };

    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kWidth << "\" height=\""
        << kHeight << "\" viewBox=\"0 0 " << kWidth << " " << kHeight
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        << "<text x=\"" << kWidth / 2 << "\" y=\"28\" text-anchor=\"middle\" font-size=\"16\">"
        << escape(mTitle) << "</text>\n";

    // Grid and ticks.
    out << "<g stroke=\"#e4e4e4\" stroke-width=\"1\">\n";
    double xStep = niceStep(t1 - t0, 10);
    std::ostringstream xLabels;
    for (double t = std::ceil(t0 / xStep) * xStep; t <= t1 + 1e-9; t += xStep) {
        out << "<line x1=\"" << num(px(t)) << "\" y1=\"" << kTop << "\" x2=\"" << num(px(t))
            << "\" y2=\"" << kTop + plotH << "\"/>\n";
        xLabels << "<text x=\"" << num(px(t)) << "\" y=\"" << kTop + plotH + 18
                << "\" text-anchor=\"middle\">" << label(t) << "</text>\n";
    }
    std::vector<double> yTicks;
    if (mScale == Scale::kLog) {
        yTicks.push_back(0);
        for (double v = 1; transform(v, mScale) <= y1; v *= 10) yTicks.push_back(v);
    } else {
        double yStep = niceStep(y1 - y0, 8);
        for (double v = std::ceil(y0 / yStep) * yStep; v <= y1 + 1e-9; v += yStep) {
            yTicks.push_back(v);
        }
    }
    std::ostringstream yLabels;
    for (double v : yTicks) {
        out << "<line x1=\"" << kLeft << "\" y1=\"" << num(py(v)) << "\" x2=\"" << kLeft + plotW
            << "\" y2=\"" << num(py(v)) << "\"/>\n";
        yLabels << "<text x=\"" << kLeft - 8 << "\" y=\"" << num(py(v) + 4)
                << "\" text-anchor=\"end\">" << label(v) << "</text>\n";
    }
    out << "</g>\n" << xLabels.str() << yLabels.str();

    // Axes and their titles.
    out << "<rect x=\"" << kLeft << "\" y=\"" << kTop << "\" width=\"" << plotW << "\" height=\""
        << plotH << "\" fill=\"none\" stroke=\"black\"/>\n"
        << "<text x=\"" << kLeft + plotW / 2 << "\" y=\"" << kTop + plotH + 40
        << "\" text-anchor=\"middle\">time (s)</text>\n"
        << "<text transform=\"translate(20 " << kTop + plotH / 2
        << ") rotate(-90)\" text-anchor=\"middle\">" << escape(mValueLabel)
        << (mScale == Scale::kLog ? " (log scale)" : "") << "</text>\n";

    auto polyline = [&](const char* colour, double width, auto value) {
        out << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"" << width
            << "\" stroke-linejoin=\"round\" points=\"";
        for (const Point& p : points) {
            out << num(px(p.ms / 1000.0)) << "," << num(py(value(p))) << " ";
        }
        out << "\"/>\n";
    };
    polyline(kInputColour, 1.5, [](const Point& p) { return p.input; });
    polyline(kOutputColour, 2.0, [](const Point& p) { return p.output; });

    // Legend in one row under the axis title, clear of the data.
    double ly = kHeight - 22;
    auto legendEntry = [&](double x, const char* colour, double width, const std::string& text) {
        out << "<line x1=\"" << x << "\" y1=\"" << ly - 4 << "\" x2=\"" << x + 30 << "\" y2=\""
            << ly - 4 << "\" stroke=\"" << colour << "\" stroke-width=\"" << width << "\"/>\n"
            << "<text x=\"" << x + 38 << "\" y=\"" << ly << "\">" << escape(text) << "</text>\n";
    };
    legendEntry(kLeft, kInputColour, 1.5, "input");
    legendEntry(kLeft + 110, kOutputColour, 2.0, mOutputLabel);
    out << "</svg>\n";
}

}  // namespace filterlab
