// ---- The page is loaded: size, and paper --------------------------------------------------------
const printWidth = 700;  // of an A4 page within its margins, in CSS pixels
function fit(width) {
  if (width <= 0 || width === pictureWidth) return;
  pictureWidth = width;
  draw();
}
fit(picture.clientWidth);
fillTable();
new ResizeObserver(() => fit(picture.clientWidth)).observe(picture);
window.addEventListener('beforeprint', () => {
  appendRows(Infinity);
  fit(printWidth);
});
window.addEventListener('afterprint', () => fit(picture.clientWidth));
