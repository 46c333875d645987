// The Slabber editor page: a view over the session the program holds.
//
// The page keeps no model of its own. Every edit is sent to the program
// (POST /api/<action>), which makes it with the session's own routines and
// answers with the whole state, the messages to show and, sometimes, a yes/no
// question; the page then draws that state. Only while the mouse is down does
// the page draw a rectangle of its own (the one being drawn or dragged).
"use strict";

const token = new URLSearchParams(location.search).get("token") || "";
const HANDLE = 7;          // corner handle half-size, screen pixels
const EDGE_GRAB = 6;       // how near an edge counts as grabbing it
const TILE = 512;
const REDUCED = 1600;      // longer side of the reduced photo

let state = null;          // the last state the program sent
let view = null;           // {place, scale, ox, oy}: screen px per frame px, frame point at canvas top-left
const views = new Map();   // place -> {scale, ox, oy}, kept while the page is open
const pictures = new Map(); // "photo/<place>" or "tile/<place>/<level>/<c>/<r>" -> HTMLImageElement
let drag = null;           // what the mouse is doing
let viewTimer = 0;
let splitTimer = 0;

const $ = (id) => document.getElementById(id);
const canvas = $("photo");
const ctx = canvas.getContext("2d");

// ---------------------------------------------------------------------------
// Talking to the program.

async function call(action, body = {}) {
  const res = await fetch("/api/" + action, {
    method: "POST",
    headers: { "Content-Type": "application/json", "X-Slabber-Token": token },
    body: JSON.stringify(body),
  });
  const reply = await res.json().catch(() => ({ error: "no answer from the editor" }));
  if (!res.ok) {
    showMessages([reply.error || "the editor refused the request"], true);
    return null;
  }
  showMessages(reply.messages || []);
  render(reply.state);
  if (reply.question) {
    const yes = await ask(reply.question);
    return call(action, Object.assign({}, body, { answers: [yes] }));
  }
  return reply;
}

async function load() {
  const res = await fetch("/api/state", { headers: { "X-Slabber-Token": token } });
  if (!res.ok) {
    const reply = await res.json().catch(() => ({}));
    document.body.textContent = "The editor refused this page: " + (reply.error || res.status) +
        ". Open the address slabber edit printed.";
    return;
  }
  render(await res.json());
}

function picture(key, url) {
  let img = pictures.get(key);
  if (!img) {
    img = new Image();
    img.onload = () => drawPhoto();
    img.src = url + (url.includes("?") ? "&" : "?") + "token=" + encodeURIComponent(token);
    pictures.set(key, img);
  }
  return img;
}

// ---------------------------------------------------------------------------
// Messages and the yes/no question.

function showMessages(list, error = false) {
  const box = $("messages");
  for (const text of list) {
    const div = document.createElement("div");
    div.className = "message" + (error || /^Error|could not|Cannot|^check the rows/i.test(text) ? " error" : "");
    const span = document.createElement("span");
    span.textContent = text;
    const close = document.createElement("button");
    close.textContent = "×";
    close.title = "Dismiss";
    close.onclick = () => div.remove();
    div.append(span, close);
    box.append(div);
    while (box.children.length > 4) box.firstChild.remove();
  }
}

function ask(text) {
  return new Promise((resolve) => {
    const dialog = $("question");
    $("question-text").textContent = text;
    dialog.onclose = () => resolve(dialog.returnValue === "yes");
    dialog.returnValue = "";
    dialog.showModal();
  });
}

// ---------------------------------------------------------------------------
// Drawing the state.

const current = () => (state && state.current.image > 0 ? state.images[state.current.image - 1] : null);

function depthText(v) {
  return v === null || v === undefined ? "–" : (Math.round(v * 100) / 100).toFixed(2);
}

function render(next) {
  state = next;
  $("file").textContent = state.file;
  const saveState = $("save-state");
  saveState.textContent = state.unsaved ? "● Unsaved changes" : "All changes saved";
  saveState.className = state.unsaved ? "unsaved" : "saved";
  document.title = (state.unsaved ? "* " : "") + "Slabber – " + state.file.split("/").pop();
  $("undo").disabled = !state.canUndo;
  $("redo").disabled = !state.canRedo;
  renderTable();
  renderRows();
  renderTemplates();
  renderSplit(state.split);
  renderFreeCorners();
  const image = current();
  $("photo-title").textContent = image ? `Image ${image.place}: ${image.Filename}` : "No image";
  renderCheckRows(image);
  if (image && (!view || view.place !== image.place)) showImage(image);
  drawPhoto();
}

function cell(row, text, className) {
  const td = document.createElement("td");
  td.textContent = text;
  if (className) td.className = className;
  row.append(td);
  return td;
}

function numberCell(row, image, column) {
  const td = cell(row, "", "number");
  const input = document.createElement("input");
  input.className = "cell";
  input.type = "text";
  input.inputMode = "decimal";
  input.dataset.column = column;
  input.value = image[column] === null ? "" : depthText(image[column]);
  input.title = column + " of image " + image.place;
  input.onclick = (e) => e.stopPropagation();
  input.onchange = () => {
    const value = Number(input.value.replace(",", "."));
    if (input.value.trim() === "" || !Number.isFinite(value)) {
      showMessages([`${column}: "${input.value}" is not a number`], true);
      input.value = image[column] === null ? "" : depthText(image[column]);
      return;
    }
    call("table", { image: image.place, column, value });
  };
  td.append(input);
  if (image[column] === null) td.classList.add("unset");
}

function flagCell(row, image, column) {
  const td = cell(row, "");
  const box = document.createElement("input");
  box.type = "checkbox";
  box.checked = image[column] === 1;
  box.title = column + " of image " + image.place;
  box.onclick = (e) => e.stopPropagation();
  box.onchange = () => call("table", { image: image.place, column, value: box.checked ? 1 : 0 });
  td.append(box);
}

function renderTable() {
  const body = $("images").tBodies[0];
  body.textContent = "";
  for (const image of state.images) {
    const row = document.createElement("tr");
    row.dataset.place = image.place;
    if (image.place === state.current.image) row.className = "current";
    cell(row, image.Source, "number");
    const path = document.createElement("span");
    path.className = "path";
    path.textContent = image.Path;
    path.title = image.Path;
    cell(row, "").append(path);
    const name = cell(row, image.Filename);
    if (image.checkRows) {
      const note = document.createElement("span");
      note.className = "check-rows";
      note.textContent = "check the rows";
      note.title = image.verdict;
      name.append(" ", note);
    }
    flagCell(row, image, "UV");
    numberCell(row, image, "Top");
    numberCell(row, image, "Base");
    numberCell(row, image, "Core Length");
    cell(row, depthText(image["Tray Length"]), "number");
    numberCell(row, image, "Angle");
    flagCell(row, image, "Use");
    cell(row, image.View > 0 ? image.View : "", "number");
    row.onclick = () => call("select", { image: image.place });
    body.append(row);
  }
}

function renderRows() {
  const body = $("rows").tBodies[0];
  body.textContent = "";
  const image = current();
  if (!image) return;
  image.rows.forEach((r, k) => {
    const row = document.createElement("tr");
    if (r.place === state.current.rectangle) row.className = "current";
    cell(row, r.place, "number");
    cell(row, depthText(r.top), "number" + (r.top === null ? " unset" : ""));
    cell(row, depthText(r.base), "number" + (r.base === null ? " unset" : ""));
    const actions = cell(row, "", "actions");
    const order = image.rows.map((x) => x.place);
    const button = (text, title, onclick, disabled) => {
      const b = document.createElement("button");
      b.textContent = text;
      b.title = title;
      b.disabled = disabled;
      b.onclick = (e) => { e.stopPropagation(); onclick(); };
      actions.append(b);
    };
    button("▲", "Move this row up", () => {
      [order[k - 1], order[k]] = [order[k], order[k - 1]];
      call("reorder", { image: image.place, order });
    }, k === 0);
    button("▼", "Move this row down", () => {
      [order[k + 1], order[k]] = [order[k], order[k + 1]];
      call("reorder", { image: image.place, order });
    }, k === image.rows.length - 1);
    button("✕", "Delete this row", () => call("delete", { image: image.place, rectangle: r.place }), false);
    row.onclick = () => call("select", { image: image.place, rectangle: r.place });
    body.append(row);
  });
}

// The finder's doubt, as the preview warns of it, until a person has looked.
function renderCheckRows(image) {
  const note = $("check-rows");
  note.hidden = !(image && image.checkRows);
  note.textContent = image && image.checkRows ? "! " + image.verdict : "";
  $("detect-rows").disabled = !image;
}

function renderTemplates() {
  const select = $("template-name");
  const chosen = select.value;
  select.textContent = "";
  if (state.templates.length === 0) select.append(new Option("(no templates)", ""));
  for (const t of state.templates) select.append(new Option(t.name + (t.description ? " – " + t.description : ""), t.name));
  if (state.templates.some((t) => t.name === chosen)) select.value = chosen;
  $("template-apply").disabled = state.templates.length === 0;
}

function renderSplit(split) {
  if (!split.started) return;
  $("split-progress").hidden = false;
  $("split").disabled = split.running;
  const bar = $("split-bar");
  bar.max = Math.max(1, split.rows);
  bar.value = split.rowsDone;
  let text = split.running ? `${split.rowsDone} of ${split.rows} rows… ${split.current}` : split.summary;
  if (!split.running) text += `\nRows in ${split.folder}` + (split.report ? `\nTable: ${split.report}` : "");
  if (split.messages.length) text += "\n" + split.messages.join("\n");
  $("split-text").textContent = text;
  clearTimeout(splitTimer);
  if (split.running) splitTimer = setTimeout(load, 400);
}

// ---------------------------------------------------------------------------
// The photo view: zoom and pan over the image's frame.

function sizeCanvas() {
  const box = $("photo-view").getBoundingClientRect();
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.max(1, Math.round(box.width * ratio));
  canvas.height = Math.max(1, Math.round(box.height * ratio));
  ctx.setTransform(ratio, 0, 0, ratio, 0, 0);
}
const viewWidth = () => canvas.width / (window.devicePixelRatio || 1);
const viewHeight = () => canvas.height / (window.devicePixelRatio || 1);

function fitView(image) {
  const [fw, fh] = image.frame;
  const scale = Math.min(viewWidth() / fw, viewHeight() / fh) * 0.98;
  return { place: image.place, scale, ox: -(viewWidth() / scale - fw) / 2, oy: -(viewHeight() / scale - fh) / 2 };
}

function showImage(image) {
  const kept = views.get(image.place);
  if (kept) {
    view = Object.assign({ place: image.place }, kept);
  } else {
    // The view the session saved for this photo, else the whole photo.
    const saved = image.views.find((v) => v.view === image.View) || null;
    view = fitView(image);
    if (saved) {
      const scale = Math.min(viewWidth() / (saved.x2 - saved.x1), viewHeight() / (saved.y2 - saved.y1));
      view = { place: image.place, scale, ox: saved.x1, oy: saved.y1 };
    }
  }
}

function toScreen(x, y) { return [(x - view.ox) * view.scale, (y - view.oy) * view.scale]; }
function toFrame(sx, sy) { return [sx / view.scale + view.ox, sy / view.scale + view.oy]; }

function zoomAt(factor, sx, sy) {
  const image = current();
  if (!image) return;
  const [fx, fy] = toFrame(sx, sy);
  const fit = fitView(image).scale;
  view.scale = Math.min(Math.max(view.scale * factor, fit * 0.5), 8);
  view.ox = fx - sx / view.scale;
  view.oy = fy - sy / view.scale;
  viewChanged();
}

// Zoom and pan are kept per photo and, shortly after they stop, saved in the
// session as the photo's view 1 (what it shows, in the frame's pixels).
function viewChanged() {
  const image = current();
  views.set(view.place, { scale: view.scale, ox: view.ox, oy: view.oy });
  drawPhoto();
  clearTimeout(viewTimer);
  viewTimer = setTimeout(() => {
    const [fw, fh] = image.frame;
    const x1 = Math.max(0, Math.round(view.ox)), y1 = Math.max(0, Math.round(view.oy));
    const x2 = Math.min(fw, Math.round(view.ox + viewWidth() / view.scale));
    const y2 = Math.min(fh, Math.round(view.oy + viewHeight() / view.scale));
    if (x2 > x1 && y2 > y1)
      call("view", { image: image.place, view: 1, x1, x2, y1, y2,
                     windowWidth: Math.round(viewWidth()), windowHeight: Math.round(viewHeight()) });
  }, 800);
}

function drawPhoto() {
  ctx.clearRect(0, 0, viewWidth(), viewHeight());
  const image = current();
  if (!image || !view) return;
  const [fw, fh] = image.frame;
  const [pw, ph] = image.photo || image.frame;
  const [x0, y0] = toScreen(0, 0);
  const reduced = picture("photo/" + image.place, `/api/photo/${image.place}?size=${REDUCED}`);
  if (reduced.complete && reduced.naturalWidth) ctx.drawImage(reduced, x0, y0, fw * view.scale, fh * view.scale);
  drawTiles(image, fw, fh, pw, ph);
  image.rows.forEach((r) => drawRow(image, r));
  if (drag && drag.preview) drawOutline(drag.preview, "#ffd400", true, null);
}

// Full-resolution detail once the view shows more than the reduced photo holds.
function drawTiles(image, fw, fh, pw, ph) {
  const photoPerScreen = pw / (fw * view.scale);
  const level = Math.max(0, Math.floor(Math.log2(Math.max(1, photoPerScreen))));
  if (pw / 2 ** level <= REDUCED * 1.05) return;
  const span = TILE * 2 ** level;                       // photo pixels per tile
  const toFrameX = fw / pw, toFrameY = fh / ph;
  const [fx1, fy1] = toFrame(0, 0);
  const [fx2, fy2] = toFrame(viewWidth(), viewHeight());
  const c1 = Math.max(0, Math.floor(fx1 / toFrameX / span)), c2 = Math.min(Math.ceil(pw / span) - 1, Math.floor(fx2 / toFrameX / span));
  const r1 = Math.max(0, Math.floor(fy1 / toFrameY / span)), r2 = Math.min(Math.ceil(ph / span) - 1, Math.floor(fy2 / toFrameY / span));
  for (let r = r1; r <= r2; ++r) {
    for (let c = c1; c <= c2; ++c) {
      const tile = picture(`tile/${image.place}/${level}/${c}/${r}`, `/api/tile/${image.place}/${level}/${c}/${r}`);
      if (!tile.complete || !tile.naturalWidth) continue;
      const [sx, sy] = toScreen(c * span * toFrameX, r * span * toFrameY);
      ctx.drawImage(tile, sx, sy, tile.naturalWidth * 2 ** level * toFrameX * view.scale,
                    tile.naturalHeight * 2 ** level * toFrameY * view.scale);
    }
  }
}

function drawOutline(corners, colour, selected, label) {
  ctx.beginPath();
  corners.forEach(([x, y], i) => {
    const [sx, sy] = toScreen(x, y);
    if (i === 0) ctx.moveTo(sx, sy); else ctx.lineTo(sx, sy);
  });
  ctx.closePath();
  ctx.lineWidth = selected ? 3 : 2;
  ctx.strokeStyle = "rgba(0,0,0,0.55)";
  ctx.setLineDash([]);
  ctx.lineWidth += 2;
  ctx.stroke();
  ctx.lineWidth -= 2;
  ctx.strokeStyle = colour;
  ctx.stroke();
  if (selected) {
    ctx.fillStyle = "rgba(255, 212, 0, 0.12)";
    ctx.fill();
    for (const [x, y] of corners) {
      const [sx, sy] = toScreen(x, y);
      ctx.fillStyle = "#fff";
      ctx.strokeStyle = "#1d2328";
      ctx.lineWidth = 1.5;
      ctx.fillRect(sx - HANDLE, sy - HANDLE, 2 * HANDLE, 2 * HANDLE);
      ctx.strokeRect(sx - HANDLE, sy - HANDLE, 2 * HANDLE, 2 * HANDLE);
    }
  }
  if (label) {
    // At the row's top-left corner, or at the view's edge when that corner is out of sight.
    const [left, top] = toScreen(Math.min(...corners.map((c) => c[0])), Math.min(...corners.map((c) => c[1])));
    const [, bottom] = toScreen(0, Math.max(...corners.map((c) => c[1])));
    const sx = Math.max(left, 4), sy = Math.min(Math.max(top, 22), Math.max(bottom, 22));
    ctx.font = "bold 13px system-ui, sans-serif";
    const w = ctx.measureText(label).width + 10;
    ctx.fillStyle = selected ? "#ffd400" : "rgba(20, 110, 190, 0.9)";
    ctx.fillRect(sx, sy - 20, w, 19);
    ctx.fillStyle = selected ? "#1d2328" : "#fff";
    ctx.fillText(label, sx + 5, sy - 6);
  }
}

function drawRow(image, r) {
  const selected = image.place === state.current.image && r.place === state.current.rectangle;
  const corners = drag && drag.rectangle === r.place && drag.preview ? null : r.corners;
  if (!corners) return;
  const depths = r.top === null || r.base === null ? "no depths" : `${depthText(r.top)} – ${depthText(r.base)} ${image.unit}`;
  drawOutline(corners, selected ? "#ffd400" : "#34a0ff", selected, `Row ${r.place}: ${depths}`);
}

// ---------------------------------------------------------------------------
// Mouse: draw, move, drag corners and edges, pan.

function mousePoint(e) {
  const box = canvas.getBoundingClientRect();
  return [e.clientX - box.left, e.clientY - box.top];
}

// What lies under the pointer: a corner or edge of the selected row first,
// then any row's corner, edge or inside.
function hit(image, sx, sy) {
  const order = image.rows.slice().sort((a, b) => (b.place === state.current.rectangle) - (a.place === state.current.rectangle));
  for (const r of order) {
    const pts = r.corners.map(([x, y]) => toScreen(x, y));
    for (let v = 0; v < pts.length; ++v)
      if (Math.abs(pts[v][0] - sx) <= HANDLE + 2 && Math.abs(pts[v][1] - sy) <= HANDLE + 2) return { kind: "corner", r, vertex: v + 1 };
    for (let k = 0; k < pts.length; ++k) {
      const [ax, ay] = pts[k], [bx, by] = pts[(k + 1) % pts.length];
      const len = Math.hypot(bx - ax, by - ay) || 1;
      const t = ((sx - ax) * (bx - ax) + (sy - ay) * (by - ay)) / (len * len);
      const d = Math.abs((bx - ax) * (ay - sy) - (ax - sx) * (by - ay)) / len;
      if (t > 0 && t < 1 && d <= EDGE_GRAB) return { kind: "edge", r, edge: k + 1 };
    }
  }
  for (const r of order) {
    const xs = r.corners.map((c) => c[0]), ys = r.corners.map((c) => c[1]);
    const [fx, fy] = toFrame(sx, sy);
    if (fx >= Math.min(...xs) && fx <= Math.max(...xs) && fy >= Math.min(...ys) && fy <= Math.max(...ys)) return { kind: "inside", r };
  }
  return { kind: "photo" };
}

const cursors = { corner: "nwse-resize", edge: "move", inside: "grab", photo: "crosshair" };

canvas.addEventListener("mousedown", (e) => {
  const image = current();
  if (!image) return;
  const [sx, sy] = mousePoint(e);
  e.preventDefault();
  if (e.button === 2 || e.button === 1 || e.shiftKey) {
    drag = { kind: "pan", sx, sy, ox: view.ox, oy: view.oy };
    return;
  }
  const h = hit(image, sx, sy);
  const start = toFrame(sx, sy).map(Math.round);
  drag = { kind: h.kind, image: image.place, start, sx, sy, moved: false };
  if (h.r) {
    drag.rectangle = h.r.place;
    drag.corners = h.r.corners.map((c) => c.slice());
    drag.vertex = h.vertex;
    drag.edge = h.edge;
    drag.free = !!h.r.free;
  }
});

canvas.addEventListener("mousemove", (e) => {
  const image = current();
  if (!image) return;
  const [sx, sy] = mousePoint(e);
  if (!drag) {
    canvas.style.cursor = cursors[hit(image, sx, sy).kind];
    return;
  }
  if (drag.kind === "pan") {
    view.ox = drag.ox - (sx - drag.sx) / view.scale;
    view.oy = drag.oy - (sy - drag.sy) / view.scale;
    drawPhoto();
    return;
  }
  if (Math.abs(sx - drag.sx) + Math.abs(sy - drag.sy) < 3 && !drag.moved) return;
  drag.moved = true;
  const [fx, fy] = toFrame(sx, sy).map(Math.round);
  const [x0, y0] = drag.start;
  if (drag.kind === "photo") {
    drag.preview = [[x0, y0], [fx, y0], [fx, fy], [x0, fy]];
  } else if (drag.kind === "inside") {
    drag.preview = drag.corners.map(([x, y]) => [x + fx - x0, y + fy - y0]);
  } else if (drag.kind === "corner") {
    // The two neighbours keep the coordinate they share with the dragged
    // corner; a free corner moves alone.
    const p = drag.corners.map((c) => c.slice());
    const v = drag.vertex - 1, before = (v + 3) % 4, after = (v + 1) % 4;
    if (!drag.free) {
      for (const n of [before, after]) {
        if (p[n][0] === drag.corners[v][0]) p[n][0] = fx; else p[n][1] = fy;
      }
    }
    p[v] = [fx, fy];
    drag.preview = p;
  } else if (drag.kind === "edge") {
    const p = drag.corners.map((c) => c.slice());
    const a = drag.edge - 1, b = drag.edge % 4;
    if (drag.free) {
      // Both ends of a free row's edge move with the pointer.
      for (const n of [a, b]) p[n] = [p[n][0] + fx - x0, p[n][1] + fy - y0];
    } else if (p[a][1] === p[b][1]) { p[a][1] = fy; p[b][1] = fy; } else { p[a][0] = fx; p[b][0] = fx; }
    drag.preview = p;
  }
  drawPhoto();
});

window.addEventListener("mouseup", async (e) => {
  if (!drag) return;
  const d = drag;
  drag = null;
  if (d.kind === "pan") { viewChanged(); return; }
  const image = current();
  if (!image) return;
  const [sx, sy] = mousePoint(e);
  const [fx, fy] = toFrame(sx, sy).map(Math.round);
  if (!d.moved) {
    await call("select", { image: d.image, rectangle: d.rectangle || 0 });
    return;
  }
  const [x0, y0] = d.start;
  if (d.kind === "photo") {
    const x = Math.min(x0, fx), y = Math.min(y0, fy), w = Math.abs(fx - x0), h = Math.abs(fy - y0);
    if (w < 4 || h < 4) { drawPhoto(); return; }
    const [fw, fh] = image.frame;
    const cx = Math.max(0, x), cy = Math.max(0, y);
    await call("add", { image: d.image, x: cx, y: cy, w: Math.min(fw, x + w) - cx, h: Math.min(fh, y + h) - cy });
  } else if (d.kind === "inside") {
    await call("move", { image: d.image, rectangle: d.rectangle, dx: fx - x0, dy: fy - y0 });
  } else if (d.kind === "corner") {
    await call("corner", { image: d.image, rectangle: d.rectangle, vertex: d.vertex, x: fx, y: fy });
  } else if (d.kind === "edge" && d.free) {
    const a = d.edge - 1, b = d.edge % 4;
    const p = d.corners.map((c) => c.slice());
    for (const n of [a, b]) p[n] = [p[n][0] + fx - x0, p[n][1] + fy - y0];
    await call("corners", { image: d.image, rectangle: d.rectangle, corners: p });
  } else if (d.kind === "edge") {
    await call("edge", { image: d.image, rectangle: d.rectangle, edge: d.edge, x: fx, y: fy });
  }
  drawPhoto();
});

canvas.addEventListener("contextmenu", (e) => e.preventDefault());
canvas.addEventListener("wheel", (e) => {
  e.preventDefault();
  const [sx, sy] = mousePoint(e);
  zoomAt(e.deltaY < 0 ? 1.2 : 1 / 1.2, sx, sy);
}, { passive: false });

// ---------------------------------------------------------------------------
// Buttons and keys.

$("undo").onclick = () => call("undo");
$("redo").onclick = () => call("redo");
$("save").onclick = () => call("save");
$("zoom-in").onclick = () => zoomAt(1.25, viewWidth() / 2, viewHeight() / 2);
$("zoom-out").onclick = () => zoomAt(0.8, viewWidth() / 2, viewHeight() / 2);
$("zoom-fit").onclick = () => { const image = current(); if (image) { view = fitView(image); viewChanged(); } };
// The selected row, or null.
function selectedRow() {
  const image = current();
  return image && state.current.rectangle > 0 ? image.rows[state.current.rectangle - 1] || null : null;
}

// One button for the selected row: free its corners, or square it again.
function renderFreeCorners() {
  const row = selectedRow();
  const button = $("free-corners");
  button.disabled = !row;
  button.textContent = row && row.free ? "Square" : "Free corners";
  button.title = row && row.free
    ? "Make the selected row an upright rectangle again (the box round its corners)"
    : "Let the selected row's four corners move one at a time, for a row seen at an angle (the split straightens it)";
}

$("free-corners").onclick = () => {
  const image = current(), row = selectedRow();
  if (!image || !row) return;
  if (row.free) call("square", { image: image.place, rectangle: row.place });
  else call("corners", { image: image.place, rectangle: row.place, corners: row.corners });
};
$("copy-rows").onclick = () => {
  const image = current();
  if (image) call("copy", { image: image.place, count: Number($("copy-count").value) });
};
$("template-apply").onclick = () => {
  const image = current();
  if (image && $("template-name").value) call("template-apply", { image: image.place, name: $("template-name").value });
};
$("template-save").onclick = () => {
  const image = current();
  if (image) call("template-save", { image: image.place, name: $("template-new").value });
};
$("split").onclick = () => call("split");
$("detect-rows").onclick = async () => {
  const image = current();
  if (!image) return;
  const button = $("detect-rows");
  button.disabled = true;  // the finder takes a moment; one run at a time
  try {
    await call("detect", { image: image.place });
  } finally {
    renderCheckRows(current());
  }
};

// The set-depths dialog: its fields start from the chosen image's settings.
function fillDepths() {
  const image = state.images[Number($("depths-image").value) - 1];
  if (!image) return;
  $("depths-top").value = image.Top === null ? "" : image.Top;
  $("depths-base").value = image.Base === null ? "" : image.Base;
  const cores = image["Core Number"] !== null && image["Core Number"] > 0 ? image["Core Number"] : image.rows.length;
  $("depths-cores").value = cores > 0 ? cores : "";
  deriveDepths();
}
function deriveDepths() {
  const top = Number($("depths-top").value), base = Number($("depths-base").value), n = Number($("depths-cores").value);
  const ok = $("depths-top").value !== "" && $("depths-base").value !== "";
  $("depths-derived").textContent = ok
      ? `Tray Length ${depthText(base - top)}` + (n >= 1 ? ` · Core Length ${depthText((base - top) / n)}` : "")
      : "";
}
$("open-depths").onclick = () => {
  const select = $("depths-image");
  select.textContent = "";
  select.append(new Option("(none)", "0"));
  for (const image of state.images) select.append(new Option(`${image.place}: ${image.Filename}`, image.place));
  select.value = String(state.current.image);
  fillDepths();
  $("cor_set-depths").showModal();
};
$("depths-image").onchange = fillDepths;
for (const id of ["depths-top", "depths-base", "depths-cores"]) $(id).oninput = $(id).onchange = deriveDepths;
$("depths-ok").onclick = async (e) => {
  e.preventDefault();
  const top = Number($("depths-top").value), base = Number($("depths-base").value);
  const image = Number($("depths-image").value);
  if (image > 0 && ($("depths-top").value === "" || $("depths-base").value === "")) {
    showMessages(["Give the starting tray's Top Depth and Base Depth"], true);
    return;
  }
  const reply = await call("depths", { image, top, base, cores: Number($("depths-cores").value) || 0 });
  // The dialog stays open when the run was not made, so the user can correct it.
  if (reply && reply.changed) $("cor_set-depths").close();
};

document.addEventListener("keydown", (e) => {
  if (e.target.tagName === "INPUT" || e.target.tagName === "SELECT" || document.querySelector("dialog[open]")) return;
  const image = current();
  const key = e.key.toLowerCase();
  if ((e.ctrlKey || e.metaKey) && key === "z") { e.preventDefault(); call(e.shiftKey ? "redo" : "undo"); }
  else if ((e.ctrlKey || e.metaKey) && key === "y") { e.preventDefault(); call("redo"); }
  else if ((e.ctrlKey || e.metaKey) && key === "s") { e.preventDefault(); call("save"); }
  else if ((e.key === "Delete" || e.key === "Backspace") && image && state.current.rectangle > 0)
    call("delete", { image: image.place, rectangle: state.current.rectangle });
  else if (e.key === "+" || e.key === "=") $("zoom-in").click();
  else if (e.key === "-") $("zoom-out").click();
  else if (e.key === "0") $("zoom-fit").click();
});

// Leaving with unsaved changes asks first.
window.addEventListener("beforeunload", (e) => {
  if (state && state.unsaved) { e.preventDefault(); e.returnValue = ""; }
});
// The photo pane changes size as the table fills and the window changes; a
// photo the user has not zoomed is fitted again.
new ResizeObserver(() => {
  sizeCanvas();
  const image = current();
  if (image && view && !views.has(image.place) && !image.views.some((v) => v.view === image.View)) view = fitView(image);
  drawPhoto();
}).observe($("photo-view"));

sizeCanvas();
load();
