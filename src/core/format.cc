// SPDX-License-Identifier: MIT
// Formatted output: printf with three conversions more, for variables.
//
// A format is a sequence of pieces, each from one conversion up to the next; "%%" never starts one. Deliberate: in the
// leading piece and after %A, %D and %T, "%%" is written as two percent signs, because only pieces that begin with a
// standard conversion go through printf; after a standard conversion as one.
// A conversion that is refused (%n) or unknown takes one argument besides those of its stars, of the type that its
// letters say, else an int. One that has no letter before the
// text ends or the next one begins takes none.
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
  bool isStandard;  // else it is printed as text, and its argument is taken and dropped
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

// What a length modifier says of an integer; "L", which says nothing of one in standard C, means the longest here.
Argument integerArgument(char length) {
  switch (length) {
    case 'l':
      return Argument::kLong;
    case 'q':
    case 'L':
      return Argument::kLongLong;
    case 'j':
      return Argument::kMax;
    case 'z':
      return Argument::kSize;
    case 't':
      return Argument::kDifference;
    default:
      return Argument::kInt;
  }
}

bool isOneOf(char letter, const char *letters) { return letter != '\0' && std::strchr(letters, letter) != nullptr; }

// The type that a conversion's letter says, whatever stands before it; that of the length for a letter that is none.
Argument argumentOf(char letter, char length) {
  if (letter == '\0' || letter == '%') return Argument::kNone;
  if (isOneOf(letter, "spn")) return Argument::kPointer;
  if (isOneOf(letter, "fFeEgGaA")) return length == 'L' ? Argument::kLongDouble : Argument::kDouble;
  if (letter == 'c') return length == 'l' ? Argument::kWide : Argument::kInt;
  const bool isInteger = isOneOf(letter, "diouxX");
  return length == 'L' && !isInteger ? Argument::kLongDouble : integerArgument(length);
}

// A conversion of the C standard, but for %n, which would write through a pointer. `length` as from readLength.
bool isStandard(char letter, char length) {
  if (isOneOf(letter, "diouxX")) return length != 'L';
  if (isOneOf(letter, "fFeEgGaA")) return length == 0 || length == 'l' || length == 'L';
  if (isOneOf(letter, "cs")) return length == 0 || length == 'l';
  return letter == 'p' && length == 0;
}

Conversion readConversion(const char *percent) {
  int stars = 0;
  const char *s = percent + 1 + std::strspn(percent + 1, "-+ #0");
  s = skipNumber(s, stars);
  if (*s == '.') s = skipNumber(s + 1, stars);
  const char length = readLength(s);
  return {s + 1, stars, argumentOf(*s, length), isStandard(*s, length)};
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

// Takes the next argument and hands it to `use` as what it is.
template <class Use>
void takeArgument(Argument argument, Arguments &arguments, Use use) {
  // NOLINTBEGIN(bugprone-branch-clone): the types differ
  switch (argument) {  // GCOVR_EXCL_BR_LINE: there is no other type
    case Argument::kNone:
      return;
    case Argument::kInt:
      return use(va_arg(arguments.list, int));
    case Argument::kLong:
      return use(va_arg(arguments.list, long));
    case Argument::kLongLong:
      return use(va_arg(arguments.list, long long));
    case Argument::kMax:
      return use(va_arg(arguments.list, std::intmax_t));
    case Argument::kSize:
      return use(va_arg(arguments.list, std::size_t));
    case Argument::kDifference:
      return use(va_arg(arguments.list, std::ptrdiff_t));
    case Argument::kDouble:
      return use(va_arg(arguments.list, double));
    case Argument::kLongDouble:
      return use(va_arg(arguments.list, long double));
    case Argument::kPointer:
      return use(va_arg(arguments.list, void *));
    case Argument::kWide:
      return use(va_arg(arguments.list, decltype(+std::wint_t{})));  // as promoted: it may be narrower than int
  }
  // NOLINTEND(bugprone-branch-clone)
}

void printStandard(std::FILE *stream, const char *format, const Conversion &conversion, Arguments &arguments) {
  int stars[2] = {0, 0};
  for (int i = 0; i < conversion.stars; ++i) stars[i] = va_arg(arguments.list, int);
  takeArgument(conversion.argument, arguments,
               [&](auto argument) { printOne(stream, format, stars, conversion.stars, argument); });
}

// As text. Its arguments are taken all the same, so that those behind it go to the conversions that they are meant for.
void printRefused(std::FILE *stream, const char *percent, const char *end, const Conversion &conversion,
                  Arguments &arguments) {
  for (int i = 0; i < conversion.stars; ++i) static_cast<void>(va_arg(arguments.list, int));
  takeArgument(conversion.argument, arguments, [](auto) {});
  std::fputc('%', stream);
  writeUnescaped(stream, percent + 1, end);
}

// False when memory for the conversion's text cannot be had (reported).
bool printStandardPiece(std::FILE *stream, const char *percent, const char *end, Arguments &arguments) {
  const Conversion conversion = readConversion(percent);
  if (!conversion.isStandard) {
    printRefused(stream, percent, end, conversion, arguments);
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
