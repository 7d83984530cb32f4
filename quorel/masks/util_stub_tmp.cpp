// TEMPORARY local stub, never committed.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cmath>
#include <string>
#include <ctime>
#include "quorel/masks/util.h"
#include "quorel/rules/plausi_exception.h"
namespace quorel {
static double parse(const char *v) {
  std::string s;
  for (const char *p = v; *p; ++p) { if (*p == '.') continue; s += (*p == ',') ? '.' : *p; }
  if (s.empty()) return 0;
  char *end; double d = std::strtod(s.c_str(), &end);
  if (*end) throw PlausiException(8, "Ungueltiges Zeichen.");
  return d;
}
std::int64_t Util::stringToInteger(const char *v, const char *) { return (std::int64_t)parse(v); }
double Util::stringToReal(const char *v, const char *) { return parse(v); }
void Util::realToString(char *t, double d) {
  std::snprintf(t, 27, "%.18g", d);
  // round trip-ish: use shortest
  char buf[40]; for (int p = 1; p <= 18; ++p) { std::snprintf(buf, sizeof buf, "%.*g", p, d); if (std::strtod(buf, nullptr) == d) break; }
  std::strcpy(t, buf);
  for (char *p = t; *p; ++p) if (*p == '.') *p = ',';
}
std::int32_t Util::compareNumbers(double a, double b) {
  double m = std::fmax(std::fabs(a), std::fabs(b)); if (m < 4e-16) return 0; double tol = 4e-16 * m; if (tol >= 0.5) tol = 0.4999999999; double d = a - b; if (std::fabs(d) < tol) return 0; return d > 0 ? 1 : -1;
}
std::int32_t Util::compareDate(const std::tm *a, const std::tm *b) {
  int x[6] = {a->tm_year, a->tm_mon, a->tm_mday, a->tm_hour, a->tm_min, a->tm_sec};
  int y[6] = {b->tm_year, b->tm_mon, b->tm_mday, b->tm_hour, b->tm_min, b->tm_sec};
  for (int i = 0; i < 6; ++i) if (x[i] != y[i]) return x[i] < y[i] ? -1 : 1;
  return 0;
}
void Util::stringToDate(std::tm *t, const char *v, const char *mask) {
  if (!*v) return;
  int d, m, y;
  if (mask && std::strcmp(mask, "JJJJ-MM-TT") == 0) { if (std::sscanf(v, "%d-%d-%d", &y, &m, &d) != 3) throw PlausiException(8, "Falsches Datum."); }
  else if (std::sscanf(v, "%d.%d.%d", &d, &m, &y) != 3 || std::strchr(v, '-')) throw PlausiException(8, "Falsches Datum.");
  if (d > 29 && m == 2) throw PlausiException(8, "Ung\xFC" "ltige Tagesangabe.");
  t->tm_mday = d; t->tm_mon = m - 1; t->tm_year = y - 1900;
}
void Util::dateToString(char *t, const std::tm *d, const char *) {
  std::snprintf(t, 64, "%02d.%02d.%04d", d->tm_mday, d->tm_mon + 1, d->tm_year + 1900);
}
void Util::substring(char *target, const char *source, std::int32_t start, std::int32_t length) {
  target[0] = 0; if (!source) return; std::int32_t n = (std::int32_t)std::strlen(source);
  if (start < 0) start = 0; std::int32_t end = length < 1 ? n : start + length; if (end > n) end = n;
  if (start >= end) return; std::memcpy(target, source + start, end - start); target[end - start] = 0;
}
}
namespace quorel {
std::int32_t Util::getSizeOf(const std::int32_t *l) { std::int32_t n = 0; if (!l) return 0; while (l[n] >= 0) ++n; return n; }
bool Util::isValidArrayAccess(const std::int32_t *d, const std::int32_t *i) { if (getSizeOf(d) == 0) return false; return getSizeOf(i) < getSizeOf(d); }
bool Util::isValidElementAccess(const std::int32_t *d, const std::int32_t *i) { return getSizeOf(i) == getSizeOf(d); }
void Util::getIndicesAsString(char *t, const std::int32_t *l) { t[0] = 0; for (std::int32_t k = 0; k < getSizeOf(l); ++k) t += std::sprintf(t, "[%d]", l[k]); }
}
namespace quorel {
void Util::getStringAsIndices(std::int32_t *t, const char *text) {
  t[0] = -1; if (!text || !*text) return; int n = 0; const char *p = text;
  while (*p) { if (*p != '[' || !p[1] || p[1] == ']') throw PlausiException(9, "Fehlerhafte Indexangabe."); ++p;
    char *end; long v = std::strtol(p, &end, 10); if (end == p) throw PlausiException(8, "Ungueltiges Zeichen."); p = end;
    if (*p != ']') throw PlausiException(9, "Fehlerhafte Indexangabe."); ++p; t[n++] = (std::int32_t)v; t[n] = -1; }
}
}
