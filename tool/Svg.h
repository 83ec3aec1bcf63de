// Drawing in SVG.
#ifndef QORN_TOOL_SVG_H
#define QORN_TOOL_SVG_H

#include <ostream>
#include <string>
#include <vector>

namespace tool {

struct Point {
  double x, y;
};

struct Box {
  double left, top, right, bottom;
};

/// A document that is written as it is drawn. A style is the name of one or several of its CSS classes:
/// title, name, tick, quiet, grid, frame and trace, and those that the picture adds.
class Svg {
public:
  /// styles: lines of CSS for the picture's own classes. Documents within one document have different
  /// numbers, from which the names of their parts come.
  Svg(std::ostream &out, double width, double height, const std::string &title, const char *styles,
      int number = 0);

  /// attributes are those of the text element.
  void Text(double x, double y, const std::string &attributes, const std::string &text);
  void TextUpwards(double x, double y, const std::string &text);
  void Line(const char *style, double x1, double y1, double x2, double y2);
  void Rectangle(const char *style, const Box &box);

  /// The bytes of a PNG file, stretched to the box.
  void Image(const Box &box, const std::string &png);
  void Trace(const std::string &style, const std::vector<Point> &points);

  /// d is the data of the path behind its start.
  void Path(const std::string &style, const Point &start, const std::string &d);

  /// What is drawn until EndClip shows within the box alone.
  void BeginClip(const Box &box);
  void EndClip();

  void End();

private:
  std::ostream &m_out;
  int m_clips = 0;
};

} // namespace tool

#endif
