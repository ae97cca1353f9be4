// The look of the pages that the tool writes: light and dark as the reader's system has it, from telephones
// to wide screens and paper.
#pragma once

namespace simhost::tool {

inline constexpr const char* kPageStyle = R"(
:root{color-scheme:light dark;--bg:#f6f7f9;--card:#fff;--ink:#1b1f24;--soft:#5a6572;--line:#d9dee5;--wave:#2563c9;
--pale:#b9cdf2;--bad:#b3261e;--badbg:#fdecea;--warn:#7a5200;--warnbg:#fff4d6;--good:#1d6b3a;--goodbg:#e6f4ea;
--check:#d5d9df}
@media screen and (prefers-color-scheme:dark){:root{--bg:#14171b;--card:#1d2127;--ink:#e6e9ed;--soft:#9aa5b1;--line:#333a43;
--wave:#7aa8f5;--pale:#33507f;--bad:#ff9a90;--badbg:#3a1d1b;--warn:#f0c560;--warnbg:#352a10;--good:#84d6a1;
--goodbg:#16301f;--check:#2b3038}}
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);font:15px/1.5 system-ui,"Segoe UI",sans-serif}
main{max-width:1200px;margin:0 auto;padding:24px 20px 60px}
h1{font-size:1.6rem;margin:0;overflow-wrap:anywhere}h2{font-size:1.15rem;margin:0 0 12px}
h3{font-size:1rem;margin:20px 0 8px}h3:first-child{margin-top:0}
.path,.soft{color:var(--soft);overflow-wrap:anywhere}.path{margin:4px 0 0}
section{background:var(--card);border:1px solid var(--line);border-radius:10px;padding:18px 20px;margin-top:18px}
.notes{list-style:none;margin:18px 0 0;padding:0}
.notes li{border-radius:8px;padding:10px 14px;margin-top:8px;overflow-wrap:anywhere;white-space:pre-line;
background:var(--warnbg);color:var(--warn)}
.notes .bad{background:var(--badbg);color:var(--bad)}.notes .good{background:var(--goodbg);color:var(--good)}
.facts{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,210px),1fr));gap:12px 24px;margin:0}
.facts dt{color:var(--soft);font-size:.85rem}.facts dd{margin:0;overflow-wrap:anywhere}
.chips{display:flex;flex-wrap:wrap;gap:6px;margin:0;padding:0;list-style:none}
.chips li{border:1px solid var(--line);border-radius:999px;padding:2px 10px;font-size:.8rem;overflow-wrap:anywhere}
.sheet{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(46%,180px),1fr));gap:12px}
figure{margin:0}figure img{display:block;width:100%;height:auto;border-radius:6px;
background:repeating-conic-gradient(var(--check) 0 25%,transparent 0 50%) 0 0/16px 16px}
figcaption{font-size:.8rem;color:var(--soft);margin-top:4px;font-variant-numeric:tabular-nums}
.lost{display:grid;place-items:center;aspect-ratio:16/9;padding:8px;border-radius:6px;background:var(--badbg);
color:var(--bad);font-size:.8rem;text-align:center;overflow-wrap:anywhere}
.channel{display:grid;grid-template-columns:150px minmax(0,1fr);gap:4px 14px;align-items:center;
border-top:1px solid var(--line);padding:6px 0}
.times{border:0;padding:0}
.channel .soft{font-size:.8rem;display:block}
svg{display:block;width:100%}svg.wave{height:64px}svg.rate{height:170px;border-bottom:1px solid var(--line)}
.sound,.mean{fill:var(--wave)}.most{fill:var(--pale)}.empty{fill:var(--bad)}
.zero{stroke:var(--line);vector-effect:non-scaling-stroke;fill:none}
.ends{display:flex;justify-content:space-between;gap:12px;font-size:.8rem;color:var(--soft);margin-top:4px}
.scroll{overflow-x:auto}
table{border-collapse:collapse;width:100%;font-variant-numeric:tabular-nums}
th,td{text-align:left;padding:5px 14px 5px 0;border-bottom:1px solid var(--line);white-space:nowrap}
table.short{width:auto}
th{color:var(--soft);font-weight:500;font-size:.85rem}tbody th{color:inherit;font-size:inherit}
caption{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
.n{text-align:right}.odd{color:var(--bad);font-weight:600}
section .notes{margin:0 0 14px}.scroll+details{margin-top:14px}
summary{cursor:pointer;font-weight:600}
pre{margin:12px 0 0;max-height:70vh;overflow:auto;font:12px/1.5 ui-monospace,Consolas,monospace;white-space:pre-wrap;
overflow-wrap:anywhere}
pre b{font-weight:600}pre .bad{color:var(--bad);background:var(--badbg)}pre .warn{color:var(--warn)}
pre i{font-style:normal;color:var(--soft)}
@media(max-width:560px){main{padding:16px 12px 40px}section{padding:14px}.channel{grid-template-columns:1fr}
.facts{grid-template-columns:repeat(auto-fill,minmax(min(100%,140px),1fr))}
.streams,.streams tbody,.streams tr{display:block}.streams tr+tr{padding-top:8px}.streams thead{display:none}
.streams tbody :is(th,td){display:flex;justify-content:space-between;gap:16px;padding-right:0;text-align:right;
white-space:normal}
.streams tbody :is(th,td)::before{content:attr(data-name);color:var(--soft);font-weight:400;text-align:left}}
:is(.scroll,pre,summary):focus-visible{outline:2px solid var(--wave);outline-offset:2px}
@media print{:root{--bg:#fff;--card:#fff}body{font-size:11pt}main{max-width:none;padding:0}
section{padding:10px 0;border-width:1px 0 0;border-radius:0}.scroll,pre{overflow:visible;max-height:none}
table{font-size:.8em}th{font-size:inherit}th,td{white-space:normal;overflow-wrap:break-word;padding-right:8px}
h2,h3,summary{break-after:avoid}figure,.channel,svg,tr,.facts div,.notes li{break-inside:avoid}
details::details-content{content-visibility:visible;display:block}
.notes li{border:1px solid var(--line)}}
)";

}  // namespace simhost::tool
