// Pictures sit on a checkerboard so that their alpha shows, inside a thin dark
// border so that white corners and a clone's white filler show against the
// white card. The page never needs scrolling sideways: thumbnails are at most
// kThumbnailSide wide and the body at most 1400 px.
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

std::string Picture(const SheetImage& image) {
    return "<div class=\"picture\"><a href=\"" + Escaped(image.file) + "\"><img src=\"" + Escaped(image.thumbnail) +
           "\" alt=\"" + Escaped(image.label) + "\"></a><span>" + Escaped(image.label) + ", " +
           std::to_string(image.width) + " &times; " + std::to_string(image.height) + "</span></div>\n";
}

std::string Card(const SheetEntry& entry) {
    std::string html = "<section class=\"card" + std::string(entry.failed ? " failed" : "") + "\">\n";
    html += "<h2><code>" + Escaped(entry.call) + "</code></h2>\n";
    if (!entry.what.empty()) html += "<p>" + Escaped(entry.what) + "</p>\n";
    if (!entry.returned.empty()) {
        html += "<p>returned <b>" + Escaped(entry.returned) + "</b>";
        if (entry.seconds) html += " in " + Milliseconds(*entry.seconds);
        html += "</p>\n";
    }
    if (!entry.images.empty()) {
        html += "<div class=\"pictures\">\n";
        for (const SheetImage& image : entry.images) html += Picture(image);
        html += "</div>\n";
    }
    return html + "</section>\n";
}

constexpr const char* kStyle =
    "body{font-family:sans-serif;margin:1.5em auto;padding:0 1em;max-width:1400px;box-sizing:border-box;"
    "background:#f4f4f4}"
    ".card{display:inline-block;vertical-align:top;max-width:100%;box-sizing:border-box;margin:0 1em 1.5em 0;"
    "padding:.6em;background:#fff;border:1px solid #ccc}"
    ".card.failed{border-color:#c00;background:#fee}"
    ".card h2{font-size:1em;margin:0 0 .3em}.card p{font-size:.85em;margin:.2em 0}"
    ".pictures{display:flex;flex-wrap:wrap;gap:.8em;align-items:flex-start;margin-top:.4em}"
    ".picture span{display:block;font-size:.8em;color:#444}"
    "img{display:block;max-width:360px;margin-bottom:.3em;border:1px solid #555;"
    "background:repeating-conic-gradient(#ddd 0 25%,#fff 0 50%) 0 0/16px 16px}";

}  // namespace

void WriteContactSheet(AtomicOutputFile& output, const std::string& title, const std::string& about,
                       const std::vector<SheetEntry>& entries) {
    std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>pixturn demo: " +
                       Escaped(title) + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n<h1>pixturn demo</h1>\n<p>" +
                       Escaped(title) + "</p>\n<p>" + Escaped(about) + "</p>\n";
    for (const SheetEntry& entry : entries) html += Card(entry);
    html += "</body>\n</html>\n";
    std::fwrite(html.data(), 1, html.size(), output.stream());
}

}  // namespace pixturn
