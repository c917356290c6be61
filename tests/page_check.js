// Added to a page of the primates' tree by scripts/check_page.sh: does what a user does, and looks at
// what becomes of it. The last line of the page then tells what went wrong.
"use strict";

const faults = [];
let checks = 0;
function check(what, found, expected) {
  ++checks;
  if (found !== expected) faults.push(`${what}: ${found}, not ${expected}`);
}

const tip = name => tree.label.indexOf(name);
const pointer = (type, atX, atY) => canvas.dispatchEvent(
    new PointerEvent(type, { clientX: atX + canvas.getBoundingClientRect().left,
                             clientY: atY + canvas.getBoundingClientRect().top, bubbles: true }));
function click(k) {
  const [atX, atY] = [screenX(k), screenY(k)];
  pointer("pointerdown", atX, atY);
  pointer("pointerup", atX, atY);
}
function search(text) {
  element("find").value = text;
  element("find").dispatchEvent(new Event("input"));
}
// Whether a dark line is drawn at a place.
function isInk(atX, atY) {
  draw();
  const ratio = window.devicePixelRatio || 1;
  const pixels = pen.getImageData((atX - 1) * ratio, (atY - 1) * ratio, 3 * ratio, 3 * ratio).data;
  for (let k = 0; k < pixels.length; k += 4) if (pixels[k] < 150) return true;
  return false;
}
// The pixels of the colour of the supports.
function supportPixels() {
  draw();
  const pixels = pen.getImageData(0, 0, canvas.width, canvas.height).data;
  let count = 0;
  for (let k = 0; k < pixels.length; k += 4) {
    count += pixels[k] > pixels[k + 1] + 60 && pixels[k] > pixels[k + 2] + 60;
  }
  return count;
}

const homo = tip("Homo sapiens");
const pan = tip("Pan");
const apes = tree.parent[homo];

check("taxa", element("shown").value, "12 of 12 taxa shown");
check("the parent of Homo and Pan", tree.parent[pan], apes);
check("the edge of Homo is drawn", isInk((screenX(homo) + screenX(apes)) / 2, screenY(homo)), true);
check("rows", Math.max(...tree.label.map((label, k) => label === null ? 0 : y[k])), 11);

check("supports on", supportPixels() > 50, true);
element("supports").click();
check("supports off", supportPixels(), 0);

click(apes);
check("collapsed", element("shown").value, "10 of 12 taxa shown");
check("rows are given back", Math.max(...tree.label.map((_, k) => hidden[k] ? 0 : y[k])), 10);
search("homo");
check("found", element("found").value, "1 of 1");
check("what was found is opened", element("shown").value, "12 of 12 taxa shown");
check("and in the middle", Math.round(screenY(homo)), Math.round(canvas.clientHeight / 2));
search("SC");
check("found several", element("found").value, "1 of 3");
element("next").click();
check("the next one", element("found").value, "2 of 3");
search("no such taxon");
check("not found", element("found").value, "not found");

element("fit").click();
const before = screenY(pan) - screenY(homo);
const at = canvas.getBoundingClientRect();
canvas.dispatchEvent(new WheelEvent("wheel", { deltaY: -500, clientX: at.left + 300,
                                               clientY: at.top + 200, cancelable: true }));
check("zoom", ((screenY(pan) - screenY(homo)) / before).toFixed(3), Math.E.toFixed(3));
const [fromX, fromY] = [screenX(pan), screenY(pan)];
pointer("pointerdown", 400, 300);
pointer("pointermove", 450, 280);
pointer("pointerup", 450, 280);
check("moved", `${Math.round(screenX(pan) - fromX)} ${Math.round(screenY(pan) - fromY)}`, "50 -20");

element("layout").value = "unrooted";
element("layout").dispatchEvent(new Event("change"));
const edge = Math.hypot(screenX(pan) - screenX(apes), screenY(pan) - screenY(apes));
check("length in the unrooted layout", (edge / view.xScale).toFixed(5),
      (tree.depth[pan] - tree.depth[apes]).toFixed(5));
check("an edge of it is drawn", isInk((screenX(pan) + screenX(apes)) / 2,
                                      (screenY(pan) + screenY(apes)) / 2), true);
click(apes);
check("collapsed there", element("shown").value, "10 of 12 taxa shown");
element("expand").click();
check("expanded", element("shown").value, "12 of 12 taxa shown");

document.body.append(`checked ${checks}, faults ${faults.length} ${faults.join("; ")}`);
