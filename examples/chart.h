// SPDX-License-Identifier: MIT
// Schedules drawn as charts: rows of bars on a terminal, and pictures in SVG with a time axis.
#ifndef KORU_EXAMPLE_CHART_H
#define KORU_EXAMPLE_CHART_H

#include "example.h"

#include <errno.h>
#include <stdarg.h>

enum { CHART_COLOURS = 12, CHART_COLUMNS = 100 };

// The same colours for both: of the terminal's 256, and as written in SVG.
static const int chartTerminalColours[CHART_COLOURS] = {110, 215, 114, 210, 146, 180, 218, 187, 116, 222, 152, 182};
static const char *const chartColours[CHART_COLOURS] = {"#8fb8de", "#f6b26b", "#93c47d", "#e99a9a",
                                                        "#b4a7d6", "#d5b08c", "#f4b6d2", "#c9c9a0",
                                                        "#7fc8c8", "#f3d27a", "#a9cfe8", "#cfa9c9"};

// --- On a terminal ---

// A row of the chart: what stands in each column, nothing for '\0', and its colour.
typedef struct {
  char symbols[CHART_COLUMNS];
  int colours[CHART_COLUMNS];
} ChartRow;

// The columns that a time up to `end` is shown in: one per instant as long as there is room.
static inline int chartColumns(int end) { return end < CHART_COLUMNS ? end : CHART_COLUMNS; }

static inline int chartColumn(int time, int end) {
  return end <= CHART_COLUMNS ? time : (int)((long long)time * CHART_COLUMNS / end);
}

// A bar has one column at least, or it would not be seen.
static inline void addBar(ChartRow *row, int start, int duration, int end, char symbol, int colour) {
  if (duration == 0) return;
  int first = chartColumn(start, end), last = chartColumn(start + duration, end);
  for (int c = first; c < CHART_COLUMNS && (c < last || c == first); c++) {
    row->symbols[c] = symbol;
    row->colours[c] = colour % CHART_COLOURS;
  }
}

static inline void printRow(const char *label, const ChartRow *row, int end, bool coloured) {
  printf("%6s |", label);
  for (int c = 0; c < chartColumns(end); c++) {
    char symbol = row->symbols[c];
    if (symbol == '\0')
      fputc(' ', stdout);
    else if (coloured)
      printf("\033[30;48;5;%dm%c\033[0m", chartTerminalColours[row->colours[c]], symbol);
    else
      fputc(symbol, stdout);
  }
  puts("|");
}

// A round distance between marks: 1, 2 or 5 times a power of ten, a tenth of the whole or more.
static inline int chartTick(int end) {
  int tick = 1;
  for (int i = 0; tick < (end + 9) / 10; i++) tick = i % 3 == 1 ? tick / 2 * 5 : tick * 2;
  return tick;
}

// Times below the chart.
static inline void printTimes(int end) {
  printf("%6s  ", "");
  int printed = 0, tick = chartTick(end);
  for (int time = 0; time <= end; time += tick) {
    int column = chartColumn(time, end);
    if (column >= printed) printed += printf("%*s%d", column - printed, "", time);
    if (time > end - tick) break;
  }
  putchar('\n');
}

// --- In SVG ---

typedef struct {
  FILE *file;
  int end;  // of the time axis
  int left, top, width, height;
} Picture;

#if defined(__GNUC__)
__attribute__((format(printf, 5, 6)))
#endif
static inline void
drawText(const Picture *p, double x, double y, const char *style, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  fprintf(p->file, "<text x=\"%.1f\" y=\"%.1f\" class=\"%s\">", x, y, style);
  vfprintf(p->file, format, arguments);
  fputs("</text>\n", p->file);
  va_end(arguments);
}

static inline double pictureX(const Picture *p, int time) {
  return p->left + (double)time * p->width / (p->end > 0 ? p->end : 1);
}

// Start a picture of a schedule with room for `plotHeight` below its title. Says why and ends the program when the file
// cannot be written.
static inline Picture openPicture(const char *program, const char *path, int end, int plotHeight, const char *title) {
  Picture p = {fopen(path, "w"), end, 90, 72, 900, plotHeight};
  if (p.file == NULL) {
    fprintf(stderr, "%s: %s: %s\n", program, path, strerror(errno));
    exit(EXIT_TROUBLE);
  }
  int width = p.left + p.width + 40, height = p.top + plotHeight + 50;
  fprintf(p.file,
          "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n"
          "<style>text{font-family:Helvetica,Arial,sans-serif;fill:#333}.title{font-size:20px;font-weight:bold}"
          ".row{font-size:12px;text-anchor:end}.bar{font-size:11px;text-anchor:middle}"
          ".axis{font-size:11px;text-anchor:middle;fill:#666}.note{font-size:12px;fill:#555}"
          ".limit{font-size:11px;fill:#c0392b;text-anchor:end}</style>\n"
          "<rect width=\"%d\" height=\"%d\" fill=\"#ffffff\"/>\n",
          width, height, width, height, width, height);
  drawText(&p, p.left, 32, "title", "%s", title);
  return p;
}

static inline void drawLine(const Picture *p, double x1, double y1, double x2, double y2, const char *stroke) {
  fprintf(p->file, "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" %s/>\n", x1, y1, x2, y2, stroke);
}

// Vertical lines at round times over the whole plot, the times below them.
static inline void drawAxis(const Picture *p) {
  double bottom = p->top + p->height;
  for (int time = 0;; time += chartTick(p->end)) {
    drawLine(p, pictureX(p, time), p->top, pictureX(p, time), bottom, "stroke=\"#e3e3e3\"");
    drawText(p, pictureX(p, time), bottom + 18, "axis", "%d", time);
    if (time > p->end - chartTick(p->end)) break;
  }
  drawLine(p, pictureX(p, p->end), p->top - 12, pictureX(p, p->end), bottom,
           "stroke=\"#c0392b\" stroke-dasharray=\"4 3\"");
  drawText(p, pictureX(p, p->end) - 5, p->top - 2, "limit", "%d", p->end);
  drawLine(p, p->left, bottom, p->left + p->width, bottom, "stroke=\"#888\"");
  drawText(p, p->left + p->width / 2.0, bottom + 38, "axis", "time");
}

static inline void drawBox(const Picture *p, int start, int duration, double y, double height, int colour) {
  fprintf(p->file,
          "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" rx=\"2\" fill=\"%s\" stroke=\"#666\" "
          "stroke-width=\"0.6\"/>\n",
          pictureX(p, start), y, pictureX(p, start + duration) - pictureX(p, start), height,
          chartColours[colour % CHART_COLOURS]);
}

// A box with its label inside, if there is room for it.
static inline void drawBar(const Picture *p, int start, int duration, double y, double height, int colour,
                           const char *label) {
  if (duration == 0) return;
  drawBox(p, start, duration, y, height, colour);
  double left = pictureX(p, start), right = pictureX(p, start + duration);
  if (right - left > 7.0 * (double)strlen(label))
    drawText(p, (left + right) / 2, y + height / 2 + 4, "bar", "%s", label);
}

// Entries in a line under the title, from x on: coloured squares with names.
static inline double drawLegend(const Picture *p, double x, int colour, const char *label) {
  fprintf(p->file, "<rect x=\"%.1f\" y=\"42\" width=\"11\" height=\"11\" fill=\"%s\" stroke=\"#666\"/>\n", x,
          chartColours[colour % CHART_COLOURS]);
  drawText(p, x + 16, 52, "note", "%s", label);
  return x + 26 + 7.0 * (double)strlen(label);
}

static inline int closePicture(const char *program, const char *path, const Picture *p) {
  fputs("</svg>\n", p->file);
  bool failed = ferror(p->file) != 0;
  if (fclose(p->file) == 0 && !failed) return EXIT_AS_HOPED;
  fprintf(stderr, "%s: %s: cannot write on\n", program, path);
  return EXIT_TROUBLE;
}

#endif  // KORU_EXAMPLE_CHART_H
