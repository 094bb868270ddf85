# Checks the links of a built site: every file and every place in it that a page refers to is there. Run it in the folder
# of the pages.
#
#     awk -f site.awk *.html

function check(reference,    part, file) {
    sub(/^"/, "", reference)
    sub(/"$/, "", reference)
    gsub(/&amp;/, "\\&", reference)
    if (reference == "" || reference ~ /^([a-z]+:|\/\/)/) return
    split(reference, part, "#")
    file = part[1] == "" ? page : part[1]
    if (part[2] == "nested-classes") return  # Doxygen refers to it also where all nested classes are private
    links[file "#" part[2]] = page
}

FNR == 1 { page = FILENAME; sub(/^\.\//, "", page) }
{
    rest = $0
    while (match(rest, /(href|src|id|name)="[^"]*"/)) {
        pair = substr(rest, RSTART, RLENGTH)
        rest = substr(rest, RSTART + RLENGTH)
        value = substr(pair, index(pair, "=") + 1)
        if (pair ~ /^(href|src)/) check(value)
        else places[page "#" substr(value, 2, length(value) - 2)] = 1
    }
}

END {
    for (link in links) {
        ++count
        split(link, part, "#")
        if (system("test -e '" part[1] "'") != 0 || (part[2] != "" && !(link in places))) {
            print links[link] ": leads nowhere: " link
            ++failures
        }
    }
    print count + 0 " links in the pages"
    if (failures > 0 || count == 0) exit 1
}
