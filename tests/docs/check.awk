# Checks pages of the documentation: relative links lead to files and headings, files that are named are there, and code
# that is said to come from a file stands there line by line, indentation aside.
#
#     awk -v root=/path/of/the/project -f check.awk PAGE...

function complain(text) {
    print FILENAME ":" FNR ": " text
    failures++
}

function strip(line) {
    sub(/^[ \t]+/, "", line)
    return line
}


# Whether the lines code[1..codeCount] stand in a row in the file.
function stands_in(path,    line, count, lines, i, k) {
    count = 0
    while ((getline line < path) > 0) lines[++count] = strip(line)
    close(path)
    for (i = 0; i + codeCount <= count; ++i) {
        for (k = 1; k <= codeCount && lines[i + k] == code[k]; ++k);
        if (k > codeCount) return 1
    }
    return 0
}

function folder_of(path) { return path ~ /\// ? substr(path, 1, match(path, /\/[^\/]*$/)) : "" }

function anchor_of(heading) {
    heading = tolower(heading)
    sub(/^#+ /, "", heading)
    gsub(/[^a-z0-9 _-]/, "", heading)
    gsub(/ /, "-", heading)
    return heading
}

# Whether the page has a heading of this anchor.
function has_anchor(path, anchor,    line, found) {
    while ((getline line < path) > 0) if (line ~ /^#/ && anchor_of(line) == anchor) found = 1
    close(path)
    return found
}

# Files of the project that the text names, as `src/model/ModelView.h`; a trailing slash names a folder.
function check_files(line,    path) {
    while (match(line, /`(include|src|apps|tests|benchmarks|examples|cmake|docs|scripts|schema|packaging|fuzz)\/[^` *]*`/)) {
        path = substr(line, RSTART + 1, RLENGTH - 2)
        line = substr(line, RSTART + RLENGTH)
        files++
        if (system("test -e '" root "/" path "'") != 0) complain("no such file: " path)
    }
}

function check_links(line,    target, part, path) {
    gsub(/`[^`]*`/, "", line)  # what stands in code is no link
    while (match(line, /\]\([^)]*\)/)) {
        target = substr(line, RSTART + 2, RLENGTH - 3)
        line = substr(line, RSTART + RLENGTH)
        if (target ~ /^[a-z]+:/) continue
        links++
        split(target, part, "#")
        path = part[1] == "" ? FILENAME : folder_of(FILENAME) part[1]
        if (system("test -e '" path "'") != 0) complain("no such file: " target)
        else if (part[2] != "" && !has_anchor(path, part[2])) complain("no such heading: " target)
    }
}

/^<!-- from / { source = $3; next }
/^```/ {
    if (!inCode) {
        inCode = 1
        codeCount = 0
    } else {
        inCode = 0
        if (source != "") {
            snippets++
            if (codeCount == 0 || !stands_in(root "/" source)) complain("this code does not stand in " source)
        }
        source = ""
    }
    next
}
inCode { code[++codeCount] = strip($0); next }
{
    check_links($0)
    check_files($0)
}

END {
    print snippets + 0 " pieces of code, " links + 0 " links, " files + 0 " files"
    if (failures > 0 || snippets == 0 || links == 0) exit 1
}
