// Pictures sit on a checkerboard so that their alpha shows, and at their own
// pixel size so that the anti-aliasing of the shears can be inspected.
#include "tools/pixturn/contact_sheet.h"

#include <cstdio>

namespace pixturn {

namespace {

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (char c : text) {
        switch (c) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            default: escaped += c; break;
        }
    }
    return escaped;
}

std::string Milliseconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f ms", seconds * 1000);
    return text;
}

std::string Figure(const SheetEntry& entry) {
    std::string html = "<figure" + std::string(entry.failed ? " class=\"failed\"" : "") + ">\n";
    if (!entry.image.empty()) html += "<img src=\"" + Escaped(entry.image) + "\" alt=\"\">\n";
    if (!entry.mask.empty()) html += "<img src=\"" + Escaped(entry.mask) + "\" alt=\"mask\">\n";
    html += "<figcaption><code>" + Escaped(entry.call) + "</code><br>" + Escaped(entry.result);
    if (entry.seconds) html += " &middot; " + Milliseconds(*entry.seconds);
    html += "</figcaption>\n</figure>\n";
    return html;
}

constexpr const char* kStyle =
    "body{font-family:sans-serif;margin:1.5em;background:#f4f4f4}"
    "figure{display:inline-block;vertical-align:top;margin:0 1em 1.5em 0;padding:.5em;background:#fff;"
    "border:1px solid #ccc}"
    "figure.failed{border-color:#c00;background:#fee}"
    "img{display:block;margin-bottom:.4em;background:repeating-conic-gradient(#ddd 0 25%,#fff 0 50%) 0 0/16px 16px}"
    "figcaption{font-size:.85em}";

}  // namespace

void WriteContactSheet(AtomicOutputFile& output, const std::string& title, const std::vector<SheetEntry>& entries) {
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>pixturn demo: " +
                       Escaped(title) + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n<h1>pixturn demo</h1>\n<p>" +
                       Escaped(title) + "</p>\n";
    for (const SheetEntry& entry : entries) html += Figure(entry);
    html += "</body>\n</html>\n";
    std::fwrite(html.data(), 1, html.size(), output.stream());
}

}  // namespace pixturn
