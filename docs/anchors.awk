# Makes of a page what Doxygen understands, which sees all pages as one folder: headings get the anchors that Markdown
# links mean, pictures lose their folder, and links to files that are no pages become plain text.
function page_of(path) {
    sub(/.*\//, "", path)
    sub(/\.md$/, "", path)
    return path
}

function rewritten(label, target,    part) {
    if (target ~ /^[a-z]+:/) return "[" label "](" target ")"
    if (target ~ /#/) {
        split(target, part, "#")
        return "[" label "](#" page_of(part[1] == "" ? FILENAME : part[1]) "_" part[2] ")"
    }
    return target ~ /\.md$/ && target !~ /\/README\.md$/ ? "[" label "](" target ")" : label
}

/^```/ { inCode = !inCode }
!inCode && /^##+ / {
    anchor = tolower($0)
    sub(/^#+ /, "", anchor)
    gsub(/[^a-z0-9 _-]/, "", anchor)
    gsub(/ /, "-", anchor)
    $0 = $0 " {#" page_of(FILENAME) "_" anchor "}"
}
!inCode {
    line = ""
    while (match($0, /\[[^]]*\]\([^)]*\)/)) {
        found = substr($0, RSTART, RLENGTH)
        before = substr($0, 1, RSTART - 1)
        $0 = substr($0, RSTART + RLENGTH)
        middle = index(found, "](")
        label = substr(found, 2, middle - 2)
        target = substr(found, middle + 2, length(found) - middle - 2)
        if (before ~ /!$/) {
            sub(/.*\//, "", target)
            line = line before "[" label "](" target ")"
        } else {
            line = line before rewritten(label, target)
        }
    }
    $0 = line $0
}
{ print }
