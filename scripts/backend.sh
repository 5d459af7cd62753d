# shellcheck shell=bash
# The local backend of ./run: a private PostgreSQL and fernhollow-backend in front of it. Sourced after
# common.sh. The backend ends with the shell that started it.
backend_folder=build/run/backend
backend_log=build/run/backend.log
backend_process=

# built_for NAME: the value of a setting of the release build, such as FERNHOLLOW_SUPABASE_URL.
built_for() {
    sed -n "s/^$1:[A-Z]*=//p" build/release/CMakeCache.txt
}

# The port on this machine of the program's backend; nothing when it was built for a backend elsewhere.
local_port() {
    built_for FERNHOLLOW_SUPABASE_URL | sed -nE 's|^http://(127\.0\.0\.1\|localhost):([0-9]+)/?$|\2|p'
}

answers_at() {
    (: <"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

without_backend() {
    say "The program starts without a backend: $* ($backend_log)"
    end_backend
}

# start_backend PORT: starts the backend. If it cannot, one line says why.
start_backend() {
    local port=$1 database
    if answers_at "$port"; then
        say "Something answers at http://127.0.0.1:$port already, so no other backend is started."
        return
    fi
    mkdir -p "$backend_folder"
    printf '\n== %s\n' "$(date '+%F %T')" >>"$backend_log"
    trap end_backend EXIT
    if ! database=$(Backend/local/postgres start "$backend_folder" 2>>"$backend_log"); then
        without_backend "$(tail -n 1 "$backend_log")"
        return
    fi
    # It runs in a session of its own, because Ctrl-C is for the program, which may still have counts to send.
    exec 3< <(exec setsid Backend/local/fernhollow-backend --database "${database##*$'\n'}" --port "$port" \
        2>>"$backend_log")
    backend_process=$!
    read -r -t 20 -u 3 || without_backend "$(tail -n 1 "$backend_log")"
    exec 3<&-
}

end_backend() {
    [ -z "$backend_process" ] || kill "$backend_process" 2>/dev/null || true
    Backend/local/postgres stop "$backend_folder" 2>>"$backend_log" || true
}

# Runs a program to its end and passes signals on to it, so that the backend ends after the program.
run_with_backend() {
    local status=0
    "$@" 3<&- &
    local program=$!
    # shellcheck disable=SC2064
    trap "kill -TERM $program 2>/dev/null || true" INT TERM HUP
    wait "$program" || status=$?
    while kill -0 "$program" 2>/dev/null; do # a signal ended the wait, but not the program
        status=0
        wait "$program" || status=$?
    done
    return "$status"
}
