# Reads what abidw says of the public headers, and prints the sizes and members of our classes, the places of their
# virtual functions and the values of our enumerators, a line each: what a program has compiled into it.
#
#     abidw ... | awk -f layout.awk | LC_ALL=C sort -u

function attribute(name,    value) {
    if (!match($0, "[ <]" name "='[^']*'")) return ""
    value = substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
    gsub(/&lt;/, "<", value)
    gsub(/&gt;/, ">", value)
    return value
}

# The scope that line stands in: one name per open element, empty for those that have none.
function scope(    path, i) {
    for (i = 1; i <= depth; ++i) if (names[i] != "") path = path (path == "" ? "" : "::") names[i]
    return path
}

function print_member(what) {
    if (scope() ~ /^(Quorlan|GeometryObjectLib|_GUID)/) print scope() " " what
}

{
    line = $0
    gsub(/^ +/, "", line)
    isEnd = line ~ /^<\//
    isWhole = line ~ /\/>$/
    match(line, /^<\/?[a-z-]+/)
    element = substr(line, 1, RLENGTH)
    gsub(/^<\/?/, "", element)
}
isEnd { --depth; next }
{
    ++depth
    elements[depth] = element
    names[depth] = element ~ /^(namespace-decl|class-decl|enum-decl)$/ ? attribute("name") : ""
}
element == "class-decl" && attribute("size-in-bits") != "" { print_member("size " attribute("size-in-bits") / 8) }
element == "base-class" { print_member(sprintf("base at %d", attribute("layout-offset-in-bits") / 8)) }
element == "data-member" { offset = attribute("layout-offset-in-bits") }
element == "var-decl" && elements[depth - 1] == "data-member" && offset != "" {
    print_member(sprintf("at %4d %s", offset / 8, attribute("name")))
}
element == "member-function" { slot = attribute("vtable-offset") }
# Destructors are left out, of which GCC does not tell the place; those of the functions behind them show it.
element == "function-decl" && slot != "" && attribute("name") !~ /^~/ { print_member(sprintf("virtual %2d %s", slot, attribute("name"))) }
element == "function-decl" { slot = "" }
element == "enumerator" { print_member("value " attribute("value") " " attribute("name")) }
isWhole { --depth }
