#!/usr/bin/env bash
# Opens an HTML page in Debian's headless Chromium as a user does: a page written
# beside it loads it in a frame 1400 px wide, waits for its pictures and prints
# what it found on one line,
#   images N broken N links N unresolved N width N
# broken: pictures that did not load; unresolved: links to an anchor the page
# lacks or to a file that cannot be read; width: what the page needs, in px.
# Usage: scripts/open-page.sh PAGE
set -euo pipefail
page=$1
check="$(dirname "$page")/.open-page.html"
trap 'rm -f "$check"' EXIT
cat > "$check" <<PAGE
<iframe id=f src="$(basename "$page")" style='width:1400px;height:900px;border:0'></iframe><pre id=r></pre>
<script>
f.onload = () => {
  const d = f.contentDocument, imgs = [...d.images], links = [...d.links];
  const resolves = a => {
    const href = a.getAttribute('href');
    if (href.startsWith('#')) return d.getElementById(href.slice(1)) !== null;
    try { const x = new XMLHttpRequest(); x.open('GET', a.href, false); x.send(); return true; } catch (e) { return false; }
  };
  Promise.all(imgs.map(i => i.complete ? 0 : new Promise(r => { i.onload = i.onerror = r; }))).then(() => {
    r.textContent = 'images ' + imgs.length + ' broken ' + imgs.filter(i => !i.naturalWidth).length +
      ' links ' + links.length + ' unresolved ' + links.filter(a => !resolves(a)).length +
      ' width ' + d.documentElement.scrollWidth;
  });
};
</script>
PAGE
chromium --headless --no-sandbox --disable-gpu --allow-file-access-from-files --virtual-time-budget=10000 \
  --dump-dom "$check" 2>/dev/null | grep -o 'images [0-9]* broken [0-9]* links [0-9]* unresolved [0-9]* width [0-9]*'
