# Checks pages of the documentation: relative links lead to files, and code that is said to come from a file stands there
# line by line, indentation aside. Run it in the folder of the pages.
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

function check_links(line,    target) {
    while (match(line, /\]\([^)]*\)/)) {
        target = substr(line, RSTART + 2, RLENGTH - 3)
        line = substr(line, RSTART + RLENGTH)
        sub(/#.*/, "", target)
        if (target == "" || target ~ /^[a-z]+:/) continue
        links++
        if (system("test -e '" target "'") != 0) complain("no such file: " target)
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
{ check_links($0) }

END {
    print snippets + 0 " pieces of code, " links + 0 " links"
    if (failures > 0 || snippets == 0 || links == 0) exit 1
}
