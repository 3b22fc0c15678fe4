# Timing helpers shared by the benchmark scripts; source it after setting $scratch
# to an empty scratch directory.

# run NAME COMMAND...: one timed run; appends "seconds kilobytes cpu-seconds" (wall
# time, peak RSS, user + system time) to $scratch/NAME.
run() {
    local name=$1
    shift
    local start=$EPOCHREALTIME
    /usr/bin/time -f '%M %U %S' -o "$scratch/rss" "$@" >/dev/null
    local end=$EPOCHREALTIME
    echo "$start $end $(cat "$scratch/rss")" | awk '{ print $2 - $1, $3, $4 + $5 }' >>"$scratch/$name"
}

# median NAME COLUMN: the median of one column of the runs of NAME.
median() {
    sort -g -k"$2","$2" "$scratch/$1" | awk -v c="$2" '{ v[NR] = $c }
        END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# fastest NAME COLUMN: the smallest value of one column of the runs of NAME (on a
# shared machine, noise only ever adds time).
fastest() {
    sort -g -k"$2","$2" "$scratch/$1" | awk -v c="$2" 'NR == 1 { print $c }'
}
