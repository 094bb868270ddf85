# Gives the headings of a page the anchors that its Markdown links mean, for Doxygen, which sees all pages as one.
function page_of(path) {
    sub(/.*\//, "", path)
    sub(/\.md$/, "", path)
    return path
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
    while (match($0, /\]\([^)#:]*#[^)]*\)/)) {
        split(substr($0, RSTART + 2, RLENGTH - 3), target, "#")
        line = line substr($0, 1, RSTART - 1) "](#" page_of(target[1] == "" ? FILENAME : target[1]) "_" target[2] ")"
        $0 = substr($0, RSTART + RLENGTH)
    }
    $0 = line $0
}
{ print }
