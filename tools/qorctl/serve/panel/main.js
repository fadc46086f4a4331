// Begins it all. The views come first: they hear of the server what the line tells.
"use strict";
for (const part of ["status", "banners", "boxes", "connect", "pages", "overview", "finder", "detail", "watched",
    "export", "charts", "drive", "codes", "kwp", "can", "trace", "names", "watch", "tabs"])
    Panel[part].begin();
Panel.access.sweep();
void Panel.link.run();
// For whoever looks at the page from outside.
window.qorCharts = () => Panel.charts.all().map(({ plot }) => plot);
