#include "painter/functions.h"

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kLn2 = 0.69314718055994530942;

// The sum of first * (x2 / divisor(1)) * (x2 / divisor(2)) and so on, until nothing is added any more.
template <typename Divisor>
double Series(double first, double x2, Divisor divisor) {
  double sum = 0, term = first;
  for (int i = 1; sum + term != sum; ++i) {
    sum += term;
    term *= x2 / divisor(i);
  }
  return sum;
}

// The odd powers of x, each divided by its exponent; with `x2` below 0, in turn added and taken away.
double OddPowers(double x, double x2) {
  double sum = 0, power = x;
  for (int i = 1; sum + power / i != sum; i += 2) {
    sum += power / i;
    power *= x2;
  }
  return sum;
}

double ExpOf(double x) {
  if (x < -200) return 0;  // below every float
  const double whole = std::floor(x / kLn2 + 0.5);
  return std::ldexp(Series(1, x - whole * kLn2, [](int i) { return i; }), static_cast<int>(whole));
}

double LogOf(double x) {
  int exponent = 0;
  const double part = std::frexp(x, &exponent), t = (part - 1) / (part + 1);
  return 2 * OddPowers(t, t * t) + exponent * kLn2;
}

// Of quarter turns of which `quarters` more are added.
double SinOf(double x, int quarters) {
  const double whole = std::floor(x / (kPi / 2) + 0.5), rest = x - whole * (kPi / 2);
  const int quarter = (static_cast<int>(whole) + quarters) & 3;
  const bool odd = quarter & 1;
  const double v = odd ? Series(1, -rest * rest, [](int i) { return (2 * i - 1) * (2 * i); })
                       : Series(rest, -rest * rest, [](int i) { return 2 * i * (2 * i + 1); });
  return quarter & 2 ? -v : v;
}

// Of 0 to 1.
double AtanOf(double x) {
  if (x <= 0.4142) return OddPowers(x, -x * x);
  const double t = (x - 1) / (x + 1);
  return kPi / 4 + OddPowers(t, -t * t);
}

}  // namespace

float Exp(float x) {
  return static_cast<float>(ExpOf(x));
}

float Pow(float base, float exponent) {
  if (base <= 0) return 0;
  return static_cast<float>(ExpOf(static_cast<double>(exponent) * LogOf(base)));
}

float Sin(float x) {
  return static_cast<float>(SinOf(x, 0));
}

float Cos(float x) {
  return static_cast<float>(SinOf(x, 1));
}

float Atan2(float y, float x) {
  const double across = std::abs(x), up = std::abs(y);
  if (across == 0 && up == 0) return 0;
  double angle = up <= across ? AtanOf(up / across) : kPi / 2 - AtanOf(across / up);
  if (x < 0) angle = kPi - angle;
  return static_cast<float>(y < 0 ? -angle : angle);
}

float Hypot(float x, float y) {
  return static_cast<float>(std::sqrt(static_cast<double>(x) * x + static_cast<double>(y) * y));
}
