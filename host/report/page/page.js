// Shows the data in the element "library". Values of files reach the page as text nodes and
// attributes only, never as HTML: a title may be anything.
"use strict";

(() => {
    const library = JSON.parse(document.getElementById("library").textContent);

    // --- Values as texts

    // What nobody can see is escaped, as brindle does on a terminal. A byte of a name that is not
    // UTF-8 is in JSON as a surrogate.
    const invisible = /[\p{Cc}\p{Cf}\p{Cs}\p{Zl}\p{Zp}]/gu;
    function readable(text) {
        return String(text ?? "").replace(invisible, character => {
            const code = character.codePointAt(0);
            if (code >= 0xdc80 && code <= 0xdcff) {
                return "\\x" + (code - 0xdc00).toString(16).toUpperCase();
            }
            return "\\u" + code.toString(16).toUpperCase().padStart(4, "0");
        });
    }

    const whole = new Intl.NumberFormat("en");
    const count = (number, word) => whole.format(number) + " " + word + (number === 1 ? "" : "s");
    const kilobits = bits => (bits === null ? "" : String(Math.round(bits / 1000)));

    // 2:23.046
    function time(milliseconds) {
        if (milliseconds === null) {
            return "";
        }
        const seconds = Math.floor(milliseconds / 1000);
        return Math.floor(seconds / 60) + ":" + String(seconds % 60).padStart(2, "0") + "." +
            String(milliseconds % 1000).padStart(3, "0");
    }

    function bytes(number) {
        const units = ["bytes", "kB", "MB", "GB", "TB"];
        let unit = 0;
        while (number >= 1000 && unit < units.length - 1) {
            number /= 1000;
            ++unit;
        }
        return (unit === 0 ? number : number.toFixed(1)) + " " + units[unit];
    }

    // --- Files: a row of the data becomes an object with what the table and the plots need.

    const place = Object.fromEntries(library.columns.map((name, index) => [name, index]));
    const files = library.files.map((row, id) => {
        const value = name => row[place[name]];
        const name = value("/file");
        // Elsewhere a backslash is an ordinary character.
        const ofWindows = /^[A-Za-z]:\\/.test(name);
        const slash = Math.max(name.lastIndexOf("/"), ofWindows ? name.lastIndexOf("\\") : -1);
        const error = value("/error");
        const hasStream = value("/file_facts/bit_rate") !== null;
        return {
            id,
            verdict: error === null ? value("/verdict") : "failed",
            title: value("/tag/title") || value("/Titlev1Tag") || "",
            artist: value("/tag/artist") || value("/artistv1Tag") || "",
            album: value("/tag/album") || "",
            year: value("/tag/year") || "",
            genre: value("/tag/genre/name") || value("/tag/genre/text") || "",
            duration: hasStream ? value("/Duration") : null,
            rate: value("/file_facts/bit_rate"),
            isVariable: value("/VBR"),
            size: value("/file_facts/size"),
            modified: value("/file_facts/modified"),
            tagType: Math.max(0, value("/TagType")),  // -1 is none, too
            reasons: value("/reasons") || [],
            codes: error ?? (value("/reasons") || []).map(reason => reason.code).join(", "),
            error,
            loudness: value("/loudness_lufs"),
            range: value("/range_lu"),
            peak: value("/true_peak_dbtp"),
            silenceCount: value("/silence_count"),
            silences: value("/silences") || [],
            folder: slash < 0 ? "." : name.slice(0, slash) || "/",
            file: name,
        };
    });

    // Of the files that brindle listen has measured.
    const isHeard = file => file.silenceCount !== null;
    const areSomeHeard = files.some(isHeard);

    // --- Elements

    function element(name, properties = {}, ...children) {
        const made = Object.assign(document.createElement(name), properties);
        made.append(...children);
        return made;
    }

    document.getElementById("version").textContent = library.version;
    document.getElementById("message").textContent = library.message;
    document.title = "Library report: " + library.paths.map(readable).join(", ");

    // --- Totals

    const tagTypes = ["no tags", "ID3v1 only", "ID3v2 only", "ID3v1 and ID3v2"];

    // 1:02:03, as in the summary of scan
    function hours(milliseconds) {
        const seconds = Math.floor((milliseconds + 500) / 1000);
        const two = number => String(number % 60).padStart(2, "0");
        return Math.floor(seconds / 3600) + ":" + two(Math.floor(seconds / 60)) + ":" +
            two(seconds);
    }

    function addTotal(number, label, className = "", whenClicked = null) {
        const total = element(whenClicked ? "button" : "div", {className: "total"},
            element("b", {textContent: number, className}), label);
        if (whenClicked) {
            total.addEventListener("click", whenClicked);
        }
        document.getElementById("totals").append(total);
    }

    function showTotals(filterByVerdict) {
        const verdicts = {ok: 0, warn: 0, bad: 0, failed: 0};
        const rates = [0, 0, 0];
        const types = tagTypes.map(() => 0);
        let milliseconds = 0;
        let size = 0;
        for (const file of files) {
            ++verdicts[file.verdict];
            if (file.error === null) {
                ++rates[file.rate === null ? 2 : Number(file.isVariable)];
                ++types[file.tagType];
                milliseconds += file.duration;
                size += file.size;
            }
        }
        addTotal(whole.format(files.length), files.length === 1 ? "file" : "files");
        addTotal(hours(milliseconds), "hours of audio");
        addTotal(bytes(size), "size");
        for (const [verdict, number] of Object.entries(verdicts)) {
            addTotal(whole.format(number), verdict, verdict, () => filterByVerdict(verdict));
        }
        ["constant bit rate", "variable bit rate", "without a stream"].forEach((label, index) =>
            addTotal(whole.format(rates[index]), label));
        tagTypes.forEach((label, index) => addTotal(whole.format(types[index]), label));
    }

    // --- Plots

    const palette = ["#d1495b", "#3a7ca5", "#e0a030", "#5b8e55", "#8d6cab", "#c06c3e", "#4aa3a2",
        "#a05080", "#8a8f98"];
    const style = name => getComputedStyle(document.documentElement).getPropertyValue(name);
    const plots = [];

    // With a heading, for a plot or for a sentence where there is nothing to plot.
    function plotBox(title, isWide) {
        const box = element("div", {className: isWide ? "plot wide" : "plot"},
            element("h2", {textContent: title}));
        document.getElementById("plots").append(box);
        return box;
    }

    // Colours are functions, so that a plot is drawn in those of the theme.
    function axis(more) {
        return {stroke: () => style("--faint"), grid: {stroke: () => style("--line"), width: 1},
            ticks: {stroke: () => style("--line"), width: 1}, ...more};
    }

    function addPlot(box, {x, bars, height, xLabel, xAxis, xText, xRange, align}) {
        const padding = 24;
        const width = () => Math.max(200, box.clientWidth - padding);
        const options = {
            width: width(),
            height,
            scales: {
                x: {time: false, range: xRange},
                y: {range: (plot, low, high) => [0, Math.max(1, high * 1.05)]},
            },
            cursor: {drag: {x: false, y: false}},
            series: [
                {label: xLabel, value: (plot, value) => (value === null ? "" : xText(value))},
                ...bars.map(bar => ({
                    label: bar.label,
                    fill: bar.colour,
                    stroke: bar.colour,
                    width: 0,
                    points: {show: false},
                    paths: uPlot.paths.bars({size: [0.85, 100], align}),
                    value: (plot, value, series, index) =>
                        (index === null ? "" : whole.format(bar.counts[index])),
                })),
            ],
            axes: [
                axis(xAxis),
                axis({size: 60, incrs: [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000,
                    10000, 20000, 50000, 100000, 200000]}),
            ],
        };
        const plot = new uPlot(options, [x, ...bars.map(bar => bar.heights || bar.counts)], box);
        const canvas = plot.root.querySelector("canvas");
        canvas.setAttribute("role", "img");
        canvas.setAttribute("aria-label", box.closest(".plot").firstChild.textContent);
        plots.push({plot, fit: () => plot.setSize({width: width(), height})});
        return plot;
    }

    // Number of values in each interval of `step`. Values beyond 40 intervals are counted in the
    // last one: a single concert must not squeeze thousands of songs into one bar.
    function addHistogram(box, values, {xLabel, steps, ticks, text = String, none}) {
        if (values.length === 0) {
            box.append(element("p", {textContent: none}));
            return false;
        }
        const sorted = Float64Array.from(values).sort();
        const most = 40;
        const common = sorted[Math.floor((sorted.length - 1) * 0.99)];
        const lowest = sorted[0];
        const step = steps.find(one => Math.floor(common / one) - Math.floor(lowest / one) < most)
            ?? steps[steps.length - 1];
        const first = Math.floor(lowest / step);
        const last = Math.min(Math.floor(sorted[sorted.length - 1] / step), first + most - 1);
        const x = [];
        for (let interval = first; interval <= last; ++interval) {
            x.push(interval * step);
        }
        const counts = x.map(() => 0);
        for (const value of values) {
            ++counts[Math.min(Math.floor(value / step), last) - first];
        }
        const beyond = values.filter(value => value >= (last + 1) * step).length;
        addPlot(box, {
            x, height: 200, align: 1,
            bars: [{label: "files", counts, colour: palette[1]}],
            xRange: () => [x[0], (last + 1) * step],
            xLabel,
            xAxis: {incrs: ticks, values: (plot, splits) => splits.map(value => text(value))},
            xText: value => (step === 1 ? text(value) : text(value) + " to " + text(value + step)),
        });
        if (beyond > 0) {
            box.append(element("p", {textContent: count(beyond, "file") + " beyond are counted in "
                + "the last bar."}));
        }
        return true;
    }

    function addYears(box) {
        const years = [];
        for (const file of files) {
            const digits = /^\d{4}/.exec(file.year);
            if (digits && Number(digits[0]) > 0) {
                years.push(Number(digits[0]));
            }
        }
        const thisYear = new Date().getFullYear();
        const believed = years.filter(year => year >= 1860 && year <= thisYear + 1);
        // A wrong year stretches the plot, so these stay out of it.
        const isPlot = addHistogram(box, believed, {
            xLabel: "year", steps: [1, 2, 5, 10], ticks: [1, 2, 5, 10, 20, 50],
            none: "No file has a year."});
        const rest = files.length - believed.length;
        if (isPlot && rest > 0) {
            box.append(element("p", {textContent: count(rest, "file") + " without a year."}));
        }
    }

    function addLoudness(box) {
        const values = files.filter(file => file.loudness !== null).map(file => file.loudness);
        const isPlot = addHistogram(box, values, {
            xLabel: "LUFS", steps: [1, 2, 5], ticks: [1, 2, 5, 10, 20],
            none: "No file that was listened to has a loudness."});
        const rest = files.length - values.length;
        if (isPlot && rest > 0) {
            box.append(element("p", {textContent: count(rest, "file") + " without a loudness."}));
        }
    }

    function byNumber(counts) {
        return [...counts].sort((a, b) => b[1] - a[1] || (a[0] < b[0] ? -1 : 1));
    }

    // Bars of the folders with most reasons, one colour for each of the most frequent codes.
    function addFolders(box) {
        const mostFolders = 15;
        const mostCodes = palette.length - 1;
        const notes = element("input", {type: "checkbox", id: "notes"});
        box.append(element("label", {}, notes, " with notes"));
        const content = element("div");
        box.append(content);
        let shown = null;

        function draw() {
            if (shown) {
                plots.splice(plots.indexOf(shown), 1);
                shown.plot.destroy();
                shown = null;
            }
            content.replaceChildren();
            const folders = new Map();
            const codes = new Map();
            const pairs = new Map();
            const add = (map, key) => map.set(key, (map.get(key) || 0) + 1);
            for (const {folder, reasons} of files) {
                for (const {code, verdict} of reasons) {
                    if (verdict !== "note" || notes.checked) {
                        add(folders, folder);
                        add(codes, code);
                        // A code has no blanks.
                        add(pairs, code + " " + folder);
                    }
                }
            }
            if (folders.size === 0) {
                content.append(element("p", {textContent: "No file has a reason."}));
                return;
            }
            const listed = byNumber(folders).slice(0, mostFolders).map(([folder]) => folder);
            const named = byNumber(codes).slice(0, mostCodes).map(([code]) => code);
            const bars = named.map((code, index) => ({label: code, colour: palette[index],
                counts: listed.map(folder => pairs.get(code + " " + folder) || 0)}));
            if (codes.size > named.length) {
                bars.push({label: "other codes", colour: palette[mostCodes],
                    counts: listed.map((folder, index) => folders.get(folder) -
                        bars.reduce((total, bar) => total + bar.counts[index], 0))});
            }
            // The bars stand on each other; the highest is drawn first, the others cover it.
            const tops = listed.map(() => 0);
            for (const bar of bars) {
                bar.heights = bar.counts.map((number, index) => (tops[index] += number));
            }
            const ticks = listed.map((folder, index) => index);
            const short = folder => {
                const last = readable(folder.slice(folder.search(/[^\\/]*$/)) || folder);
                return last.length > 18 ? last.slice(0, 17) + "\u2026" : last;
            };
            const plot = addPlot(content, {
                xLabel: "folder", x: ticks, height: 300, align: 0, bars: bars.reverse(),
                xRange: () => [-0.6, listed.length - 0.4],
                xAxis: {splits: () => ticks, rotate: -35, size: 90, gap: 8,
                    values: (ignored, splits) => splits.map(index => short(listed[index]))},
                xText: index => readable(listed[index]),
            });
            shown = plots.find(one => one.plot === plot);
            if (folders.size > listed.length) {
                content.append(element("p", {textContent: "The " + listed.length + " of "
                    + count(folders.size, "folder") + " with most reasons."}));
            }
        }
        notes.addEventListener("change", draw);
        draw();
    }

    function showPlots() {
        // Boxes first: a plot is as wide as its box, and they share the width.
        const titles = ["Bit rates, kbit/s", "Lengths, minutes", "Files by year"];
        if (areSomeHeard) {
            titles.push("Loudness, LUFS");
        }
        const boxes = titles.map(title => plotBox(title, false));
        const folders = plotBox("Reasons by folder", true);
        const rates = files.filter(file => file.rate !== null).map(file => file.rate / 1000);
        const none = "No file has a stream.";
        addHistogram(boxes[0], rates, {
            xLabel: "kbit/s", steps: [8, 16, 32, 64], ticks: [16, 32, 64, 128, 256], none});
        const lengths = files.filter(file => file.duration !== null)
            .map(file => file.duration / 1000);
        const minute = 60;
        const steps = [1, 2, 5, 10, 15, 30, minute, 2 * minute, 5 * minute, 10 * minute,
            30 * minute];
        addHistogram(boxes[1], lengths, {
            xLabel: "minutes", steps, none,
            ticks: [...steps, 60 * minute, 120 * minute, 300 * minute],
            text: seconds => Math.floor(seconds / minute) + ":" +
                String(Math.floor(seconds % minute)).padStart(2, "0")});
        addYears(boxes[2]);
        if (areSomeHeard) {
            addLoudness(boxes[3]);
        }
        addFolders(folders);
    }

    // --- Table

    const textOf = {
        duration: file => time(file.duration),
        rate: file => kilobits(file.rate) + (file.isVariable && file.rate !== null ? " VBR" : ""),
        size: file => (file.size === null ? "" : (file.size / 1e6).toFixed(2)),
        loudness: file => (file.loudness === null ? "" : file.loudness.toFixed(1)),
        silenceCount: file => (isHeard(file) ? String(file.silenceCount) : ""),
    };
    const cellText = (file, field) => (textOf[field] ? textOf[field](file) : readable(file[field]));

    // A text node: there is nothing in it that could be taken for HTML.
    function plainText(cell) {
        const field = cell.getField();
        const text = cellText(cell.getData(), field);
        if (field === "verdict") {
            cell.getElement().classList.add(text);
        } else {
            cell.getElement().title = text;
        }
        return document.createTextNode(text);
    }

    // "192", "<192", ">=3:30", "1990-1999", "-16--14"; what is none of them matches nothing.
    const operators = {
        "": (value, limit) => Math.trunc(value) === limit,
        "<": (value, limit) => value < limit,
        ">": (value, limit) => value > limit,
        "<=": (value, limit) => value <= limit,
        ">=": (value, limit) => value >= limit,
    };
    function numberTest(text) {
        const number = part => (part.startsWith("-") ? -number(part.slice(1))
            : part.split(":").reduce((total, digits) => total * 60 + Number(digits), 0));
        const span = /^(-?[\d.:]+)\s*-\s*(-?[\d.:]+)$/.exec(text.trim());
        if (span) {
            return value => value >= number(span[1]) && value <= number(span[2]);
        }
        const one = /^([<>]=?|)\s*(-?[\d.:]+)$/.exec(text.trim());
        return one ? value => operators[one[1]](value, number(one[2])) : () => false;
    }

    // The table asks once per file; what was typed is parsed once.
    function numberFilter(unit) {
        let typed = null;
        let test = null;
        return (text, value) => {
            if (text !== typed) {
                typed = text;
                test = numberTest(text);
            }
            return value !== null && value !== "" && test(Number.parseFloat(value) / unit);
        };
    }

    // Many times as fast as a comparison by the rules of a language.
    function compareTexts(a, b) {
        const x = a.toLowerCase();
        const y = b.toLowerCase();
        return x < y ? -1 : x > y ? 1 : 0;
    }

    const order = ["failed", "bad", "warn", "ok"];
    const text = (title, field, more) => ({title, field, sorter: compareTexts, minWidth: 60,
        headerFilter: "input", formatter: plainText, ...more});
    const lowest = -1e9;  // below all loudnesses
    const number = (title, field, width, unit) => text(title, field, {width, hozAlign: "right",
        sorter: (a, b) => (a ?? lowest) - (b ?? lowest), headerFilterFunc: numberFilter(unit)});
    const columnsOfSound = [
        number("LUFS", "loudness", 85, 1),
        number("Silences", "silenceCount", 100, 1),
    ];

    const columns = [
        {title: "", field: "id", width: 44, headerSort: false, formatter: toggleButton},
        text("Verdict", "verdict", {width: 100,
            sorter: (a, b) => order.indexOf(a) - order.indexOf(b), headerFilterFunc: "starts"}),
        text("Title", "title", {widthGrow: 3}),
        text("Artist", "artist", {widthGrow: 2}),
        text("Album", "album", {widthGrow: 2}),
        text("Year", "year", {width: 80, headerFilterFunc: numberFilter(1)}),
        text("Genre", "genre", {width: 90}),
        number("Length", "duration", 95, 1000),
        number("kbit/s", "rate", 90, 1000),
        number("MB", "size", 75, 1e6),
        ...(areSomeHeard ? columnsOfSound : []),
        text("Reasons", "codes", {widthGrow: 3}),
        text("File", "file", {widthGrow: 4}),
    ];

    // "-14.2 LUFS, range 5.3 LU, true peak -0.3 dBTP"
    function loudnessOf(file) {
        const parts = [[file.loudness, "", " LUFS"], [file.range, "range ", " LU"],
            [file.peak, "true peak ", " dBTP"]];
        return parts.filter(([value]) => value !== null)
            .map(([value, before, after]) => before + value.toFixed(1) + after)
            .join(", ") || "No loudness";
    }

    function silencesOf(file) {
        const listed = file.silences.slice(0, 20);
        const more = file.silenceCount - listed.length;
        return count(file.silenceCount, "silence") + " inside: "
            + listed.map(({begin_ms: begin, end_ms: end}) => time(begin) + " to " + time(end))
                .join(", ") + (more > 0 ? " and " + whole.format(more) + " more" : "");
    }

    // Everything about a file that has no column of its own.
    function reasonsOf(file) {
        const list = element("ul", {className: "reasons"});
        for (const {code, verdict, text: reason} of file.reasons) {
            list.append(element("li", {}, element("b", {textContent: verdict, className: verdict}),
                " " + code + ": " + readable(reason)));
        }
        if (file.error !== null) {
            list.append(element("li", {textContent: readable(file.error)}));
        } else if (file.reasons.length === 0) {
            list.append(element("li", {textContent: "No reasons."}));
        }
        if (isHeard(file)) {
            list.append(element("li", {textContent: loudnessOf(file)}));
            if (file.silenceCount > 0) {
                list.append(element("li", {textContent: silencesOf(file)}));
            }
        }
        list.append(element("li", {textContent: readable(file.file)}));
        if (file.modified !== null) {
            list.append(element("li", {textContent: "Modified " + file.modified.replace("T", " ")
                + ", " + whole.format(file.size) + " bytes, " + tagTypes[file.tagType]}));
        }
        return list;
    }

    function toggleButton() {
        const button = element("button", {type: "button", className: "toggle",
            textContent: "\u25b8"});
        button.setAttribute("aria-label", "Reasons");
        button.setAttribute("aria-expanded", "false");
        return button;
    }

    function toggle(row) {
        const shown = row.getElement().querySelector(".reasons");
        const button = row.getElement().querySelector(".toggle");
        if (shown) {
            shown.remove();
        } else {
            row.getElement().append(reasonsOf(row.getData()));
        }
        button.setAttribute("aria-expanded", String(!shown));
        button.textContent = shown ? "\u25b8" : "\u25be";
        row.normalizeHeight();
    }

    const table = new Tabulator("#table", {
        data: files,
        index: "id",
        columns,
        layout: "fitColumns",
        height: "75vh",
        nestedFieldSeparator: false,
        headerFilterLiveFilterDelay: 50,
        // It would make all visible rows again after each filter.
        autoResize: false,
        placeholder: "No file matches.",
    });
    table.on("rowClick", (event, row) => {
        // Not after a text was marked in the unfolded part.
        if (!event.target.closest(".reasons")) {
            toggle(row);
        }
    });
    // Not "dataFiltered": for its handlers the table makes an object for each row.
    table.on("renderComplete", () => {
        const active = table.getDataCount("active");
        document.getElementById("shown").textContent = active === files.length
            ? count(files.length, "file")
            : whole.format(active) + " of " + count(files.length, "file");
    });

    showTotals(verdict => {
        const before = table.getHeaderFilterValue("verdict");
        table.setHeaderFilterValue("verdict", before === verdict ? "" : verdict);
    });
    // The files first: plots take the time of many rows.
    table.on("tableBuilt", () => setTimeout(showPlots));

    let fitting = null;
    addEventListener("resize", () => {
        clearTimeout(fitting);
        fitting = setTimeout(() => {
            table.redraw();
            plots.forEach(({fit}) => fit());
        }, 200);
    });

    // --- Light and dark

    const dark = matchMedia("(prefers-color-scheme: dark)");
    function setTheme(theme) {
        document.documentElement.dataset.theme = theme;
        document.getElementById("theme").textContent = theme === "dark" ? "Light" : "Dark";
        plots.forEach(({plot}) => plot.redraw());
    }
    const theme = () => document.documentElement.dataset.theme;
    setTheme(dark.matches ? "dark" : "light");
    dark.addEventListener("change", () => setTheme(dark.matches ? "dark" : "light"));
    document.getElementById("theme").addEventListener("click",
        () => setTheme(theme() === "dark" ? "light" : "dark"));

    // --- Paper

    // The table has elements for the visible rows only. On paper all are visible that the filters
    // leave, in their order, up to a number that a browser prints in reasonable time.
    const mostPrinted = 5000;
    let themeOnScreen = null;

    addEventListener("beforeprint", () => {
        themeOnScreen = theme();
        setTheme("light");
        const rows = table.getData("active");
        const fields = columns.filter(column => column.title);
        const body = element("tbody");
        for (const file of rows.slice(0, mostPrinted)) {
            body.append(element("tr", {}, ...fields.map(({field}) =>
                element("td", {textContent: field === "codes" && file.error === null
                    ? file.reasons.map(({code, text: reason}) => code + ": " + readable(reason))
                        .join("; ")
                    : cellText(file, field)}))));
        }
        const print = document.getElementById("print");
        print.replaceChildren(element("table", {}, element("thead", {}, element("tr", {},
            ...fields.map(({title}) => element("th", {textContent: title})))), body));
        if (rows.length > mostPrinted) {
            print.append(element("p", {textContent: "The first " + whole.format(mostPrinted)
                + " of " + count(rows.length, "file") + ". A filter selects others."}));
        }
    });
    addEventListener("afterprint", () => {
        document.getElementById("print").replaceChildren();
        setTheme(themeOnScreen);
    });
})();
