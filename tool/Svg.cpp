#include "Svg.h"

#include "Text.h"

namespace tool {

namespace {

constexpr char kStyles[] =
    "    text { font-family: 'DejaVu Sans', 'Segoe UI', Helvetica, Arial, sans-serif; font-size: 12px; fill: "
    "#222 }\n"
    "    .title { font-size: 17px; font-weight: bold }\n"
    "    .name { font-size: 13px; font-weight: bold }\n"
    "    .tick { font-size: 11px }\n"
    "    .quiet { fill: #555 }\n"
    "    .grid { stroke: #dcdcdc; stroke-width: 1; fill: none }\n"
    "    .frame { stroke: #444; stroke-width: 1; fill: none }\n"
    "    .trace { fill: none; stroke-width: 1.3; stroke-linejoin: round }\n";

// Text for an XML document. What is not valid there, control characters and broken UTF-8, becomes a question
// mark.
std::string Escaped(const std::string &text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    std::size_t length = 1;
    if (c >= 0xC2 && c < 0xF5) length = c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    bool valid = c >= 0x20 && (c < 0x7F || length > 1) && i + length <= text.size();
    for (std::size_t k = 1; valid && k < length; ++k)
      valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    // The shortest forms alone, no surrogates, and nothing above the last code point.
    if (valid && length > 2) {
      const auto second = static_cast<unsigned char>(text[i + 1]);
      if ((c == 0xE0 && second < 0xA0) || (c == 0xED && second > 0x9F) || (c == 0xF0 && second < 0x90) ||
          (c == 0xF4 && second > 0x8F) ||
          (c == 0xEF && second == 0xBF && static_cast<unsigned char>(text[i + 2]) > 0xBD))
        valid = false;
    }
    if (!valid) {
      result += '?';
      ++i;
      continue;
    }
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else
      result.append(text, i, length);
    i += length;
  }
  return result;
}

std::string Number(double value) {
  std::string text = Fixed(value, 1);
  if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
  return text;
}

std::string Pair(const Point &point) { return Number(point.x).append(" ").append(Number(point.y)); }

std::string Base64(const std::string &bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t k = 0; k < 3; ++k)
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    for (std::size_t k = 0; k < 4; ++k)
      text += i + k > bytes.size() ? '=' : kDigits[group >> (18 - 6 * k) & 63U];
  }
  return text;
}

std::ostream &operator<<(std::ostream &out, const Box &box) {
  return out << "x=\"" << Number(box.left) << "\" y=\"" << Number(box.top) << "\" width=\""
             << Number(box.right - box.left) << "\" height=\"" << Number(box.bottom - box.top) << '"';
}

} // namespace

Svg::Svg(std::ostream &out, double width, double height, const std::string &title, const char *styles,
         int number)
    : m_out(out), m_clips(100 * number) {
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(width) << "\" height=\""
      << Number(height) << "\" viewBox=\"0 0 " << Number(width) << ' ' << Number(height) << "\">\n"
      << "  <title>" << Escaped(title) << "</title>\n  <style>\n"
      << kStyles << styles << "  </style>\n  <rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
}

void Svg::Text(double x, double y, const std::string &attributes, const std::string &text) {
  m_out << "  <text x=\"" << Number(x) << "\" y=\"" << Number(y) << '"' << (attributes.empty() ? "" : " ")
        << attributes << '>' << Escaped(text) << "</text>\n";
}

void Svg::TextUpwards(double x, double y, const std::string &text) {
  m_out << "  <text transform=\"translate(" << Pair({x, y}) << ") rotate(-90)\" text-anchor=\"middle\">"
        << Escaped(text) << "</text>\n";
}

void Svg::Line(const char *style, double x1, double y1, double x2, double y2) {
  Path(style, {x1, y1}, std::string("L").append(Pair({x2, y2})));
}

void Svg::Rectangle(const char *style, const Box &box) {
  m_out << "  <rect class=\"" << style << "\" " << box << "/>\n";
}

void Svg::Image(const Box &box, const std::string &png) {
  m_out << "  <image " << box << " preserveAspectRatio=\"none\" href=\"data:image/png;base64," << Base64(png)
        << "\"/>\n";
}

void Svg::Trace(const std::string &style, const std::vector<Point> &points) {
  std::string d;
  for (std::size_t i = 1; i < points.size(); ++i) d.append("L").append(Pair(points[i]));
  Path("trace " + style, points.front(), d);
}

void Svg::Path(const std::string &style, const Point &start, const std::string &d) {
  m_out << "  <path class=\"" << style << "\" d=\"M" << Pair(start) << d << "\"/>\n";
}

void Svg::BeginClip(const Box &box) {
  ++m_clips;
  m_out << "  <clipPath id=\"clip" << m_clips << "\"><rect " << box << "/></clipPath>\n"
        << "  <g clip-path=\"url(#clip" << m_clips << ")\">\n";
}

void Svg::EndClip() { m_out << "  </g>\n"; }

void Svg::End() { m_out << "</svg>\n"; }

} // namespace tool
