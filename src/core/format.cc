// SPDX-License-Identifier: MIT
// Formatted output: printf with three conversions more, for variables.
//
// A format is a sequence of pieces, each from one conversion up to the next; "%%" never starts one. Deliberate: in the
// leading piece and after %A, %D and %T, "%%" is written as two percent signs; after a standard conversion as one.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>

#include "core/alloc.h"
#include "core/variable.h"

namespace koru {

namespace {

// ----- domains

bool present(const CSint *v, std::int64_t value) { return value <= v->max && contains(v, static_cast<int>(value)); }

// Prints the run of present values that starts at `first`, below the maximum, and returns its last value. A run that
// reaches the maximum is left for the caller to close.
int printRun(std::FILE *stream, const CSint *v, int first) {
  std::fprintf(stream, "%d..", first);
  int last = first;
  while (last < v->max && contains(v, last + 1)) ++last;
  if (last < v->max) std::fprintf(stream, "%d, ", last);
  return last;
}

void printHoles(std::FILE *stream, const CSint *v) {
  std::fputc('{', stream);
  for (int value = v->min; value < v->max; value = valueAfter(v, value)) {
    const std::int64_t next = std::int64_t{value} + 1;
    if (present(v, next) && present(v, next + 1) && next < v->max) {
      value = printRun(stream, v, value);
      if (value == v->max) break;
    } else {
      std::fprintf(stream, "%d, ", value);
    }
  }
  std::fprintf(stream, "%d}", v->max);
}

void printDomain(std::FILE *stream, const CSint *v) {
  if (v == nullptr) {
    std::fputs("(null)", stream);
  } else if (isInstantiated(v)) {
    std::fprintf(stream, "%d", v->min);
  } else if (v->bits == nullptr) {
    std::fprintf(stream, v->count == 2 ? "{%d, %d}" : "{%d..%d}", v->min, v->max);
  } else {
    printHoles(stream, v);
  }
}

void printNamed(std::FILE *stream, const CSint *v) {
  if (v != nullptr && v->name != nullptr) std::fprintf(stream, "%s: ", v->name);
  printDomain(stream, v);
}

void printArray(std::FILE *stream, CSint *const *array, int size) {
  for (int i = 0; array != nullptr && i < size; ++i) {
    if (i > 0) std::fputs(", ", stream);
    printNamed(stream, array[i]);
  }
}

// ----- standard conversions

enum class Argument { kNone, kInt, kLong, kLongLong, kMax, kSize, kDifference, kDouble, kLongDouble, kPointer, kWide };

// One conversion as it stands in a format: %[flags][width][.precision][length]letter.
struct Conversion {
  const char *end;  // past the letter
  int stars;        // width and precision taken from the arguments
  Argument argument;
};

const char *skipNumber(const char *s, int &stars) {
  if (*s == '*') {
    ++stars;
    return s + 1;
  }
  return s + std::strspn(s, "0123456789");
}

// The length modifier as one letter: 'H' for hh, 'q' for ll, 0 for none.
char readLength(const char *&s) {
  if (*s == '\0' || std::strchr("hlLjzt", *s) == nullptr) return 0;
  const char length = *s++;
  if (length == *s && length == 'h') return ++s, 'H';
  if (length == *s && length == 'l') return ++s, 'q';
  return length;
}

Argument integerArgument(char length) {
  switch (length) {
    case 0:
    case 'h':
    case 'H':
      return Argument::kInt;
    case 'l':
      return Argument::kLong;
    case 'q':
      return Argument::kLongLong;
    case 'j':
      return Argument::kMax;
    case 'z':
      return Argument::kSize;
    case 't':
      return Argument::kDifference;
    default:
      return Argument::kNone;
  }
}

// kNone for whatever is not a conversion of the C standard, and for %n, which would write through a pointer.
Argument argumentOf(char letter, char length) {
  if (letter == '\0') return Argument::kNone;
  if (std::strchr("diouxX", letter) != nullptr) return integerArgument(length);
  if (std::strchr("fFeEgGaA", letter) != nullptr) {
    if (length == 'L') return Argument::kLongDouble;
    return length == 0 || length == 'l' ? Argument::kDouble : Argument::kNone;
  }
  if (letter == 'c' && length == 'l') return Argument::kWide;
  if (letter == 'c' && length == 0) return Argument::kInt;
  if (letter == 's' && (length == 0 || length == 'l')) return Argument::kPointer;
  return letter == 'p' && length == 0 ? Argument::kPointer : Argument::kNone;
}

Conversion readConversion(const char *percent) {
  Conversion conversion{percent + 1, 0, Argument::kNone};
  const char *s = percent + 1 + std::strspn(percent + 1, "-+ #0");
  s = skipNumber(s, conversion.stars);
  if (*s == '.') s = skipNumber(s + 1, conversion.stars);
  const char length = readLength(s);
  conversion.argument = argumentOf(*s, length);
  if (conversion.argument != Argument::kNone) conversion.end = s + 1;
  return conversion;
}

// ----- pieces

// The next '%' that starts a conversion, at s or behind it, or the end of the text.
const char *findConversion(const char *s) {
  for (s = std::strchr(s, '%'); s != nullptr && s[1] == '%'; s = std::strchr(s + 2, '%')) continue;
  return s;
}

const char *pieceEnd(const char *s) {
  const char *next = findConversion(s);
  return next != nullptr ? next : s + std::strlen(s);
}

void write(std::FILE *stream, const char *begin, const char *end) {
  std::fwrite(begin, 1, static_cast<std::size_t>(end - begin), stream);
}

void writeUnescaped(std::FILE *stream, const char *begin, const char *end) {
  for (const char *s = begin; s != end; ++s) {
    std::fputc(*s, stream);
    if (s[0] == '%' && s + 1 != end && s[1] == '%') ++s;
  }
}

// The format is the caller's and its arguments are taken as readConversion found them, so no checker can see them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

template <class T>
void printOne(std::FILE *stream, const char *format, const int *stars, int count, T argument) {
  if (count == 0) std::fprintf(stream, format, argument);
  if (count == 1) std::fprintf(stream, format, stars[0], argument);
  if (count == 2) std::fprintf(stream, format, stars[0], stars[1], argument);
}

#pragma GCC diagnostic pop

struct Arguments {
  std::va_list list;
};

void printStandard(std::FILE *stream, const char *format, const Conversion &conversion, Arguments &arguments) {
  int stars[2] = {0, 0};
  for (int i = 0; i < conversion.stars; ++i) stars[i] = va_arg(arguments.list, int);
  const auto print = [&](auto argument) { printOne(stream, format, stars, conversion.stars, argument); };
  switch (conversion.argument) {  // GCOVR_EXCL_BR_LINE: see below
    case Argument::kInt:
      return print(va_arg(arguments.list, int));
    case Argument::kLong:
      return print(va_arg(arguments.list, long));
    case Argument::kLongLong:
      return print(va_arg(arguments.list, long long));
    case Argument::kMax:
      return print(va_arg(arguments.list, std::intmax_t));
    case Argument::kSize:
      return print(va_arg(arguments.list, std::size_t));
    case Argument::kDifference:
      return print(va_arg(arguments.list, std::ptrdiff_t));
    case Argument::kDouble:
      return print(va_arg(arguments.list, double));
    case Argument::kLongDouble:
      return print(va_arg(arguments.list, long double));
    case Argument::kPointer:
      return print(va_arg(arguments.list, void *));
    case Argument::kWide:
      return print(va_arg(arguments.list, decltype(+std::wint_t{})));  // as promoted: it may be narrower than int
    case Argument::kNone:  // GCOVR_EXCL_LINE: what is no conversion is not printed here
      return;              // GCOVR_EXCL_LINE
  }
}

// False when memory for the conversion's text cannot be had (reported).
bool printStandardPiece(std::FILE *stream, const char *percent, const char *end, Arguments &arguments) {
  const Conversion conversion = readConversion(percent);
  if (conversion.argument == Argument::kNone) {
    std::fputc('%', stream);
    writeUnescaped(stream, percent + 1, end);
    return true;
  }
  const auto length = static_cast<std::size_t>(conversion.end - percent);
  auto *format = static_cast<char *>(allocate(length + 1));
  if (format == nullptr) return false;
  std::memcpy(format, percent, length);
  format[length] = '\0';
  printStandard(stream, format, conversion, arguments);
  deallocate(format);
  writeUnescaped(stream, conversion.end, end);
  return true;
}

bool isVariableConversion(const char *percent) { return percent[1] == 'A' || percent[1] == 'D' || percent[1] == 'T'; }

void printVariables(std::FILE *stream, char letter, Arguments &arguments) {
  if (letter == 'A') {
    CSint **array = va_arg(arguments.list, CSint **);
    return printArray(stream, array, va_arg(arguments.list, int));
  }
  const CSint *v = va_arg(arguments.list, CSint *);
  return letter == 'T' ? printNamed(stream, v) : printDomain(stream, v);
}

void print(std::FILE *stream, const char *format, Arguments &arguments) {
  const char *percent = pieceEnd(format);
  write(stream, format, percent);
  while (*percent != '\0') {
    const char *end;
    if (isVariableConversion(percent)) {
      end = pieceEnd(percent + 2);
      printVariables(stream, percent[1], arguments);
      write(stream, percent + 2, end);
    } else {
      end = pieceEnd(percent + 1);
      if (!printStandardPiece(stream, percent, end, arguments)) return;
    }
    percent = end;
  }
}

}  // namespace
}  // namespace koru

void cs_printf(const char *format, ...) {
  if (format == nullptr) return;
  koru::Arguments arguments;
  va_start(arguments.list, format);
  koru::print(stdout, format, arguments);
  va_end(arguments.list);
}

void cs_fprintf(FILE *stream, const char *format, ...) {
  if (stream == nullptr || format == nullptr) return;
  koru::Arguments arguments;
  va_start(arguments.list, format);
  koru::print(stream, format, arguments);
  va_end(arguments.list);
}
