# The IDE help of the Xojo plug-in file: the README's method reference (its
# table, the paragraphs around it and the calls of its Xojo code block) with,
# under each method, what its calls in the demo's gallery gave on the test card.
# Writes the page; its pictures are the gallery's full-size files, which the
# caller copies beside it.
# Usage: awk -v version=X -f scripts/help-page.awk README.md GALLERY/index.html
#
# Markdown is read only as far as the README uses it there: `code`, **bold**,
# paragraphs, one table and one code block.

function escaped(text) {
    gsub(/&/, "\\&amp;", text); gsub(/</, "\\&lt;", text); gsub(/>/, "\\&gt;", text)
    return text
}

# Pairs of `marker` around some text become that text in the element `tag`.
function paired(text, marker, tag,    out, start, rest, closing) {
    out = ""
    while ((start = index(text, marker)) > 0) {
        rest = substr(text, start + length(marker))
        closing = index(rest, marker)
        if (closing == 0) break
        out = out substr(text, 1, start - 1) "<" tag ">" substr(rest, 1, closing - 1) "</" tag ">"
        text = substr(rest, closing + length(marker))
    }
    return out text
}

# `code` and **bold**, bold around code too; the rest is plain text.
function inline(text) {
    return paired(paired(escaped(text), "`", "code"), "**", "b")
}

function trimmed(text) {
    gsub(/^[ \t]+|[ \t]+$/, "", text)
    return text
}

# The method a declaration, call or code line names right after `prefix`, and
# whether it takes arguments: "RotateQLM(" for "RotateQLM(angle As Double...".
function callee(text, prefix,    at, rest) {
    at = index(text, prefix)
    if (at == 0) return ""
    rest = substr(text, at + length(prefix))
    match(rest, /^[A-Za-z0-9_]+\(?/)
    return substr(rest, 1, RLENGTH)
}

# Paragraphs before the table introduce the page, those after it that open on
# a method's name in bold ("**What `RotateMemoryQLM` counts**") join its
# section, and the code block's own go after the introduction.
function endParagraph(    lead) {
    if (paragraph == "") return
    if (section == "methods") {
        aside[++asides] = paragraph
    } else if (rows > 0 && match(paragraph, /^\*\*[^*]*`[A-Za-z0-9_]+`/)) {
        lead = callee(substr(paragraph, 1, RLENGTH), "`")
        note[lead] = note[lead] "<p>" inline(paragraph) "</p>\n"
    } else {
        intro[++intros] = paragraph
    }
    paragraph = ""
}

# README.md
FNR == NR && /^## / {
    endParagraph()
    section = $0 == "## The methods, as Xojo code calls them" ? "methods" : $0 == "## Method reference" ? "reference" : ""
    next
}
FNR == NR && section == "methods" && /^```/ { inBlock = !inBlock; next }
FNR == NR && section == "methods" && inBlock { if (index($0, "p.")) code[++codeLines] = $0; next }
FNR == NR && section == "reference" && /^\|/ {
    cells = split($0, cell, "|")
    if ($0 ~ /^\|---/) next
    if (!columns) {
        for (i = 2; i < cells; i++) label[++columns] = inline(trimmed(cell[i]))
        next
    }
    ++rows
    for (i = 2; i < cells; i++) row[rows, i - 1] = trimmed(cell[i])
    next
}
FNR == NR && section != "" {
    if ($0 == "") endParagraph(); else paragraph = paragraph == "" ? $0 : paragraph " " $0
    next
}
FNR == NR { next }

# The gallery: one card per call, its code, what it returned, its pictures.
/^<h2><code>/ {
    call = $0; sub(/^<h2><code>/, "", call); sub(/<\/code><\/h2>$/, "", call)
    card[++cards] = call
    next
}
/^<p>returned <b>/ {
    returned[cards] = $0; sub(/^<p>returned <b>/, "", returned[cards]); sub(/<\/b>.*/, "", returned[cards])
    next
}
/^<div class="picture"><a href="/ {
    file = $0; sub(/^<div class="picture"><a href="/, "", file); sub(/".*/, "", file)
    caption = $0; sub(/.*<span>/, "", caption); sub(/<\/span>.*/, "", caption)
    ++pictures[cards]
    pictureFile[cards, pictures[cards]] = file
    pictureCaption[cards, pictures[cards]] = caption
    next
}

# The call in the caption as code, in the picture's text as plain text.
function figure(file, call, said) {
    return "<figure><img src=\"" file "\" alt=\"" call said "\"><figcaption><code>" call "</code>" said \
           "</figcaption></figure>\n"
}

function figures(c, call, said,    html, i) {
    html = ""
    for (i = 1; i <= pictures[c]; i++) html = html figure(pictureFile[c, i], call, said pictureCaption[c, i])
    return html
}

END {
    print "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">"
    print "<title>PixTurn " version ": Picture methods</title>"
    print "<style>"
    print "body{font-family:sans-serif;line-height:1.4;max-width:60em;margin:1em auto;padding:0 1em;color:#222}"
    print "h1{font-size:1.5em}h2{font-size:1.2em;margin:0 0 .5em}code,pre{font-family:monospace;font-size:.95em}"
    print "pre{background:#f4f4f4;padding:.5em;margin:0;white-space:pre-wrap}"
    print "section{border-top:1px solid #ccc;padding:1em 0}nav ul{columns:3;padding-left:1.2em}"
    print "th{text-align:left;vertical-align:top;padding:.3em 1em .3em 0;white-space:nowrap;font-weight:normal;color:#555}"
    print "td{vertical-align:top;padding:.3em 0}table{border-collapse:collapse}"
    print ".pictures{display:flex;flex-wrap:wrap;gap:1em;align-items:flex-start}figure{margin:.5em 0 0}"
    print "figcaption{font-size:.85em;color:#444;max-width:420px}"
    print "img{display:block;max-width:100%;border:1px solid #555;"
    print "background:repeating-conic-gradient(#ddd 0 25%,#fff 0 50%) 0 0/16px 16px}"
    print "</style>\n</head>\n<body>"
    print "<h1>PixTurn " version ": the Picture methods</h1>"
    for (i = 1; i <= intros; i++) print "<p>" inline(intro[i]) "</p>"
    for (i = 1; i <= asides; i++) print "<p>" inline(aside[i]) "</p>"
    print "<p>The pictures are the results of the calls under them on <code>p</code>, the test card of " \
          "<code>pixturn demo</code>; a call that takes a mask gets the mask shown here:</p>"
    print "<div class=\"pictures\">\n" figures(1, "p", ": ") "</div>"

    print "<nav><ul>"
    for (r = 1; r <= rows; r++) {
        name[r] = callee(row[r, 1], "`")
        bare = name[r]; sub(/\($/, "", bare)
        id[r] = bare (++seen[bare] > 1 ? "-" seen[bare] : "")
        title[r] = row[r, 1]
        sub(/ As [A-Za-z0-9]+`.*/, "`", title[r])
        title[r] = seen[bare] > 1 ? inline(title[r]) : "<code>" bare "</code>"
        print "<li><a href=\"#" id[r] "\">" title[r] "</a></li>"
    }
    print "</ul></nav>"

    for (r = 1; r <= rows; r++) {
        bare = name[r]; sub(/\($/, "", bare)
        print "<section id=\"" id[r] "\">\n<h2>" bare "</h2>\n<table>"
        for (k = 1; k <= columns; k++) print "<tr><th>" label[k] "</th><td>" inline(row[r, k]) "</td></tr>"
        calls = ""
        for (i = 1; i <= codeLines; i++) {
            if (callee(code[i], "p.") == name[r]) calls = calls (calls == "" ? "" : "\n") escaped(code[i])
        }
        if (calls == "") lacking = lacking "\n" bare ": no call in the README's Xojo code block"
        print "<tr><th>Xojo</th><td><pre>" calls "</pre></td></tr>\n</table>"
        printf "%s", note[bare]
        print "<div class=\"pictures\">"
        shown = 0
        for (c = 2; c <= cards; c++) {
            if (callee(card[c], "p.") != name[r]) continue
            ++shown
            said = " returned " returned[c]
            # A number is shown beside the picture it was asked of.
            if (pictures[c]) printf "%s", figures(c, card[c], said ": ")
            else printf "%s", figure(pictureFile[1, 1], card[c], said " for p: " pictureCaption[1, 1])
        }
        if (!shown) lacking = lacking "\n" bare ": no call in the gallery"
        print "</div>\n</section>"
    }
    print "</body>\n</html>"
    # A page with a method short of its facts is not written off as done.
    if (lacking != "") {
        printf "help-page.awk:%s\n", lacking > "/dev/stderr"
        exit 1
    }
}
