// C entry points of line descriptions and regression fits
// (declared in include/subsurf/plot_regression.h).
#include <array>
#include <span>
#include <string>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "plot/line_description.h"
#include "plot/regression_fit.h"
#include "subsurf/plot_regression.h"

namespace ss = subsurf;

namespace {

constexpr int kLogScale = 2;

ss::AxisLogs logsOf(const int* xtype, const int* ytype) {
  return {xtype && *xtype == kLogScale, ytype && *ytype == kLogScale};
}

void setStatus(int* status, int value) {
  if (status) *status = value;
}

void writeDescription(char* desc, const std::string& text) { ss::setFixed(desc, ss::kLineDescriptionWidth, text); }

// The two-point builders share everything but the engine routine.
template <typename Describe>
void describeTwoPoints(Describe describe, const int* xtype, const int* ytype, const float* x1, const float* y1,
                       const float* x2, const float* y2, char* desc, int* status) {
  setStatus(status, 1);
  if (!desc || !x1 || !y1 || !x2 || !y2) return;
  try {
    std::string text;
    const ss::Status s = describe(*x1, *y1, *x2, *y2, logsOf(xtype, ytype), text);
    writeDescription(desc, text);
    if (!s) return ss::host::showMessage(s.message());
    setStatus(status, 0);
  } catch (...) {
  }
}

void describePolynomialOf(int terms, const int* xtype, const int* ytype, const float* coef, char* desc) {
  if (!desc || !coef) return;
  try {
    std::array<double, 4> c{};
    for (int k = 0; k < terms; ++k) c[static_cast<std::size_t>(k)] = coef[k];
    writeDescription(desc, ss::describePolynomial(std::span<const double>(c.data(), static_cast<std::size_t>(terms)),
                                                  logsOf(xtype, ytype)));
  } catch (...) {
  }
}

}  // namespace

extern "C" {

void ZW_LINEDESC(const int* xtype, const int* ytype, const float* x1, const float* y1, const float* x2,
                 const float* y2, char* desc, int* status) {
  describeTwoPoints(ss::describeStraightLine, xtype, ytype, x1, y1, x2, y2, desc, status);
}

void ZW_LINEREVDESC(const int* xtype, const int* ytype, const float* x1, const float* y1, const float* x2,
                    const float* y2, char* desc, int* status) {
  describeTwoPoints(ss::describeLineInY, xtype, ytype, x1, y1, x2, y2, desc, status);
}

void ZW_LINEDESC2(const int* xtype, const int* ytype, const float* a, const float* b, char* desc) {
  if (!desc || !a || !b) return;
  try {
    writeDescription(desc, ss::describePowerLine(*a, *b, logsOf(xtype, ytype)));
  } catch (...) {
  }
}

void ZW_LINEDESC3(const int* xtype, const int* ytype, const float* coef, char* desc) {
  describePolynomialOf(3, xtype, ytype, coef, desc);
}

void ZW_LINEDESC4(const int* xtype, const int* ytype, const float* coef, char* desc) {
  describePolynomialOf(4, xtype, ytype, coef, desc);
}

void ZW_REGMETHODS(char* text) {
  if (!text) return;
  for (int i = 0; i < 6; ++i)
    ss::setFixed(text + 8 * i, 8, ss::regressionMethodName(static_cast<ss::RegressionMethod>(i)));
}

void ZW_REGFIT(const int* n, const double* x, const double* y, const char* method, const char* form,
               const int* usefixed, const double* fixedx, const double* fixedy, double* coef, double* stats,
               char* report, int* status) {
  setStatus(status, 1);
  if (!n || !method || !form) return;
  try {
    const auto m = ss::regressionMethodNamed(ss::fixedText(method, 8));
    const auto f = ss::regressionFormNamed(ss::fixedText(form, 8));
    if (!m || !f) return ss::host::showMessage("Unknown regression method or form");
    const std::size_t count = *n > 0 && x && y ? static_cast<std::size_t>(*n) : 0;
    std::optional<ss::FixedPoint> fixed;
    if (usefixed && *usefixed == 1 && fixedx && fixedy) fixed = ss::FixedPoint{*fixedx, *fixedy};
    ss::RegressionFit fit;
    const ss::Status s = ss::fitRegression(std::span<const double>(x, count), std::span<const double>(y, count), *m,
                                           *f, fixed, fit);
    if (!s) return ss::host::showMessage(s.message());
    if (coef)
      for (std::size_t k = 0; k < 4; ++k) coef[k] = k < fit.coefficients.size() ? fit.coefficients[k] : 0.0;
    if (stats) {
      stats[0] = fit.r2;
      stats[1] = fit.cc;
      stats[2] = fit.sd;
      stats[3] = fit.p10;
      stats[4] = fit.p90;
    }
    if (report) ss::setFixed(report, ss::kLineDescriptionWidth, ss::regressionReportLine(fit));
    setStatus(status, 0);
  } catch (...) {
  }
}

}  // extern "C"
