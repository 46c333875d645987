#include "plot/regression_fit.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/sorted_percentile.h"

namespace subsurf {

namespace {

constexpr const char* kMethodNames[] = {"forced", "x-on-y", "y-on-x", "rmb", "rma", "means"};
constexpr const char* kFormNames[] = {"line", "power", "poly2", "poly3"};

std::string lowerTrimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

int polynomialOrder(RegressionForm form) {
  switch (form) {
    case RegressionForm::Poly2: return 2;
    case RegressionForm::Poly3: return 3;
    default: return 1;
  }
}

bool usable(double v) { return std::isfinite(v) && !isNull(v) && !isNoValue(v); }

const Status kGradient = Status::error("Unmanagable line definition - check gradient");

// Centred sums of a set of points (two passes, so large offsets cost no digits).
struct CentredSums {
  double n = 0, meanU = 0, meanV = 0, suu = 0, svv = 0, suv = 0;
};

CentredSums centredSums(const std::vector<double>& u, const std::vector<double>& v) {
  CentredSums s;
  s.n = static_cast<double>(u.size());
  s.meanU = std::accumulate(u.begin(), u.end(), 0.0) / s.n;
  s.meanV = std::accumulate(v.begin(), v.end(), 0.0) / s.n;
  for (std::size_t i = 0; i < u.size(); ++i) {
    const double du = u[i] - s.meanU, dv = v[i] - s.meanV;
    s.suu += du * du;
    s.svv += dv * dv;
    s.suv += du * dv;
  }
  return s;
}

// Slope and intercept of a straight line by one of the methods.
Status fitStraight(const std::vector<double>& u, const std::vector<double>& v, RegressionMethod method,
                   const std::optional<FixedPoint>& fixed, double& intercept, double& slope) {
  if (method == RegressionMethod::Forced) {
    double sdd = 0, sde = 0;
    for (std::size_t i = 0; i < u.size(); ++i) {
      const double d = u[i] - fixed->x;
      sdd += d * d;
      sde += d * (v[i] - fixed->y);
    }
    if (sdd == 0.0) return kGradient;
    slope = sde / sdd;
    intercept = fixed->y - slope * fixed->x;
    return Status::ok();
  }
  if (method == RegressionMethod::Means) {
    std::vector<std::size_t> order(u.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return u[a] < u[b]; });
    const std::size_t half = u.size() / 2;
    double lu = 0, lv = 0, hu = 0, hv = 0;
    for (std::size_t k = 0; k < half; ++k) {
      lu += u[order[k]];
      lv += v[order[k]];
      hu += u[order[u.size() - 1 - k]];
      hv += v[order[u.size() - 1 - k]];
    }
    lu /= static_cast<double>(half);
    lv /= static_cast<double>(half);
    hu /= static_cast<double>(half);
    hv /= static_cast<double>(half);
    if (hu - lu == 0.0) return kGradient;
    slope = (hv - lv) / (hu - lu);
    intercept = lv - slope * lu;
    return Status::ok();
  }
  const CentredSums s = centredSums(u, v);
  switch (method) {
    case RegressionMethod::YOnX:
      if (s.suu == 0.0) return kGradient;
      slope = s.suv / s.suu;
      break;
    case RegressionMethod::XOnY:
      if (s.suv == 0.0) return kGradient;
      slope = s.svv / s.suv;
      break;
    case RegressionMethod::Rma:
      if (s.suu == 0.0 || s.suv == 0.0) return kGradient;
      slope = std::copysign(std::sqrt(s.svv / s.suu), s.suv);
      break;
    case RegressionMethod::Rmb: {
      if (s.suu == 0.0 || s.suv == 0.0) return kGradient;
      const double b1 = s.suv / s.suu, b2 = s.svv / s.suv;
      slope = (b1 * b2 - 1.0 + std::sqrt((1.0 + b1 * b1) * (1.0 + b2 * b2))) / (b1 + b2);
      break;
    }
    default:
      return kGradient;
  }
  intercept = s.meanV - slope * s.meanU;
  return Status::ok();
}

// Least squares by Householder QR: minimises |A c - b| for an m x p matrix A
// held column by column. False when A has (numerically) dependent columns.
bool solveLeastSquares(std::vector<std::vector<double>> a, std::vector<double> b, std::vector<double>& c) {
  const std::size_t m = b.size(), p = a.size();
  for (std::size_t k = 0; k < p; ++k) {
    double norm = 0;
    for (std::size_t i = k; i < m; ++i) norm = std::hypot(norm, a[k][i]);
    if (norm == 0.0) return false;
    const double alpha = a[k][k] > 0 ? -norm : norm;
    // v = a_k - alpha e_k (from row k down); reflect every later column and b.
    std::vector<double> vk(a[k].begin() + static_cast<std::ptrdiff_t>(k), a[k].end());
    vk[0] -= alpha;
    const double vv = std::inner_product(vk.begin(), vk.end(), vk.begin(), 0.0);
    auto reflect = [&](std::vector<double>& col) {
      double dot = 0;
      for (std::size_t i = k; i < m; ++i) dot += vk[i - k] * col[i];
      const double f = 2.0 * dot / vv;
      for (std::size_t i = k; i < m; ++i) col[i] -= f * vk[i - k];
    };
    for (std::size_t j = k + 1; j < p; ++j) reflect(a[j]);
    reflect(b);
    a[k][k] = alpha;
  }
  // Back substitution; a diagonal tiny beside the largest means rank deficiency.
  double largest = 0;
  for (std::size_t k = 0; k < p; ++k) largest = std::max(largest, std::fabs(a[k][k]));
  c.assign(p, 0.0);
  for (std::size_t k = p; k-- > 0;) {
    if (std::fabs(a[k][k]) <= largest * 1e-13) return false;
    double sum = b[k];
    for (std::size_t j = k + 1; j < p; ++j) sum -= a[j][k] * c[j];
    c[k] = sum / a[k][k];
  }
  return true;
}

// Polynomial of the given order in x; forced through the fixed point when given.
Status fitPolynomial(const std::vector<double>& u, const std::vector<double>& v, int order,
                     const std::optional<FixedPoint>& fixed, std::vector<double>& coefficients) {
  // Work in t = (x - centre) / scale so that the powers stay near 1.
  const auto [lo, hi] = std::minmax_element(u.begin(), u.end());
  const double centre = 0.5 * (*lo + *hi);
  const double scale = *hi - *lo > 0 ? 0.5 * (*hi - *lo) : 1.0;
  const std::size_t m = u.size();
  const int first = fixed ? 1 : 0;
  const double t0 = fixed ? (fixed->x - centre) / scale : 0.0;
  std::vector<std::vector<double>> a;
  for (int k = first; k <= order; ++k) {
    std::vector<double> col(m);
    for (std::size_t i = 0; i < m; ++i) {
      const double t = (u[i] - centre) / scale;
      col[i] = std::pow(t, k) - (fixed ? std::pow(t0, k) : 0.0);
    }
    a.push_back(std::move(col));
  }
  std::vector<double> b(v);
  if (fixed)
    for (double& value : b) value -= fixed->y;
  std::vector<double> d;
  if (!solveLeastSquares(std::move(a), std::move(b), d)) return Status::error("Not enough data points!");
  // Coefficients in t, constant first.
  std::vector<double> inT(static_cast<std::size_t>(order) + 1, 0.0);
  for (int k = first; k <= order; ++k) inT[static_cast<std::size_t>(k)] = d[static_cast<std::size_t>(k - first)];
  if (fixed) {
    double atT0 = 0;
    for (int k = 1; k <= order; ++k) atT0 += inT[static_cast<std::size_t>(k)] * std::pow(t0, k);
    inT[0] = fixed->y - atT0;
  }
  // Expand sum d_k ((x - centre) / scale)^k into powers of x.
  coefficients.assign(static_cast<std::size_t>(order) + 1, 0.0);
  for (int k = 0; k <= order; ++k) {
    const double dk = inT[static_cast<std::size_t>(k)] / std::pow(scale, k);
    double binomial = 1;
    for (int j = 0; j <= k; ++j) {
      coefficients[static_cast<std::size_t>(j)] += dk * binomial * std::pow(-centre, k - j);
      binomial = binomial * (k - j) / (j + 1);
    }
  }
  return Status::ok();
}

double polynomialAt(const std::vector<double>& c, double x) {
  double sum = 0;
  for (std::size_t k = c.size(); k-- > 0;) sum = sum * x + c[k];
  return sum;
}

}  // namespace

std::optional<RegressionMethod> regressionMethodNamed(std::string_view name) {
  const std::string key = lowerTrimmed(name);
  for (int i = 0; i < 6; ++i)
    if (key == kMethodNames[i]) return static_cast<RegressionMethod>(i);
  return std::nullopt;
}

const char* regressionMethodName(RegressionMethod method) { return kMethodNames[static_cast<int>(method)]; }

std::optional<RegressionForm> regressionFormNamed(std::string_view name) {
  const std::string key = lowerTrimmed(name);
  for (int i = 0; i < 4; ++i)
    if (key == kFormNames[i]) return static_cast<RegressionForm>(i);
  return std::nullopt;
}

double RegressionFit::valueAt(double x) const {
  if (form == RegressionForm::Power) return coefficients[0] * std::pow(x, coefficients[1]);
  return polynomialAt(coefficients, x);
}

Status fitRegression(std::span<const double> x, std::span<const double> y, RegressionMethod method,
                     RegressionForm form, const std::optional<FixedPoint>& fixed, RegressionFit& fit) {
  fit = RegressionFit{};
  fit.method = method;
  fit.form = form;
  const bool forced = method == RegressionMethod::Forced;
  const bool power = form == RegressionForm::Power;
  const int order = polynomialOrder(form);
  if (forced && !fixed) return Status::error("No fixed point entry!");
  if (order > 1 && !forced && method != RegressionMethod::YOnX)
    return Status::error(fmt::format("Method {} fits straight and power lines only; polynomials take y-on-x or forced",
                                     regressionMethodName(method)));

  // The points in fitting coordinates (logs for the power form).
  std::vector<double> u, v;
  const std::size_t n = std::min(x.size(), y.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (!usable(x[i]) || !usable(y[i])) continue;
    if (power && (x[i] <= 0.0 || y[i] <= 0.0)) continue;
    fit.usedX.push_back(x[i]);
    u.push_back(power ? std::log10(x[i]) : x[i]);
    v.push_back(power ? std::log10(y[i]) : y[i]);
  }
  if (u.empty()) return Status::error("No valid data points!");
  std::optional<FixedPoint> through;
  if (forced) {
    if (!usable(fixed->x) || !usable(fixed->y) || (power && (fixed->x <= 0.0 || fixed->y <= 0.0)))
      return Status::error("Invalid fixed point!");
    through = power ? FixedPoint{std::log10(fixed->x), std::log10(fixed->y)} : *fixed;
  }
  const std::size_t parameters = static_cast<std::size_t>(order) + 1 - (forced ? 1 : 0);
  const std::size_t needed = forced ? parameters : static_cast<std::size_t>(order) + 1;
  if (u.size() < needed) return Status::error("Not enough data points!");

  std::vector<double> c;
  if (order == 1) {
    double intercept = 0, slope = 0;
    if (Status s = fitStraight(u, v, method, through, intercept, slope); !s) return s;
    c = {intercept, slope};
  } else if (Status s = fitPolynomial(u, v, order, through, c); !s) {
    return s;
  }
  fit.coefficients = power ? std::vector<double>{std::pow(10.0, c[0]), c[1]} : c;
  fit.points = static_cast<int>(u.size());

  // Statistics in fitting coordinates.
  const CentredSums sums = centredSums(u, v);
  double rss = 0;
  fit.residuals.reserve(u.size());
  for (std::size_t i = 0; i < u.size(); ++i) {
    const double r = v[i] - polynomialAt(c, u[i]);
    fit.residuals.push_back(r);
    rss += r * r;
  }
  fit.r2 = sums.svv > 0 ? 1.0 - rss / sums.svv : (rss == 0 ? 1.0 : 0.0);
  fit.cc = sums.suu > 0 && sums.svv > 0 ? sums.suv / std::sqrt(sums.suu * sums.svv) : 0.0;
  fit.sd = u.size() > parameters ? std::sqrt(rss / static_cast<double>(u.size() - parameters)) : 0.0;
  std::vector<double> sorted(fit.residuals);
  std::sort(sorted.begin(), sorted.end());
  fit.p10 = percentileOfSorted(sorted, 10);
  fit.p90 = percentileOfSorted(sorted, 90);
  return Status::ok();
}

std::string regressionReportLine(const RegressionFit& fit) {
  const auto number = [](double v) { return formatReal(static_cast<double>(static_cast<float>(v)), -6); };
  return fmt::format("Regression: {}, R2={}, CC={}, SD={}, p10={}, p90={}", regressionMethodName(fit.method),
                     number(fit.r2), number(fit.cc), number(fit.sd), number(fit.p10), number(fit.p90));
}

}  // namespace subsurf
