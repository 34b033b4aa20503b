# Puts source files together to one that compiles at once, which takes a fraction of the time. Each file's unnamed
# namespace gets a name of its own, so that files need not know of each other's names.
# Usage: awk -f unit.awk FILE... > unit.cpp

FNR == 1 {
    unit += 1
    printf "#line 1 \"%s\"\n", FILENAME
}

{ print $0 == "namespace {" ? "namespace unit_" unit " {" : $0 }
