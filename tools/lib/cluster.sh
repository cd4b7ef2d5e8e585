# shellcheck shell=bash disable=SC2154
# Three MariaDB nodes with Galera on loopback, for tools/servers. Uses its $root, $dir, $place, $password and
# end_process.

# The scripts that transfer data to a joining node are in a package whose services are not needed here: it is unpacked.
transfer_scripts() {
    local target=$root/build/setup/transfer fetched
    if [ ! -e "$target/wsrep_sst_rsync" ]; then
        fetched=$(mktemp -d "$place/fetch.XXXXXX")
        chmod 777 "$fetched"
        (cd "$fetched" && apt-get -q download mariadb-server) >>"$dir/cluster.log" 2>&1 ||
            fail "the package mariadb-server cannot be fetched (log: $dir/cluster.log)"
        dpkg-deb -x "$fetched"/mariadb-server_*.deb "$fetched/unpacked"
        mkdir -p "$target"
        cp "$fetched"/unpacked/usr/bin/wsrep_sst_{common,rsync} "$target/"
        rm -rf "$fetched"
    fi
    mkdir -p "$place/scripts"
    cp "$target"/wsrep_sst_* "$place/scripts/"
}

# The transfer's daemon drops root's rights, so the nodes never run as root.
exec_as_node_user() {
    local rights=()
    [ "$(id -u)" != 0 ] || rights=(setpriv --reuid=nobody --regid=nogroup --clear-groups --)
    cd / && PATH="$place/scripts:$PATH" exec "${rights[@]}" "$@"
}

node_sql() { mariadb --no-defaults -uroot --connect-timeout=2 --socket="$place/node$1/s" -N -e "$2" 2>/dev/null; }

await_ready() {
    for _ in $(seq 300); do
        [ "$(node_sql "$1" "SHOW STATUS LIKE 'wsrep_ready'" | cut -f 2)" != ON ] || return 0
        sleep 0.1
    done
    return 1
}

# Ports of a node: clients, group, incremental and full transfer.
node_ports() { read -r client group incremental full <"$place/node$1/ports"; }

# $1: the node, $2: "new" for the one that founds the cluster. A node that was killed a moment ago is taken back only when
# the others have noticed, so it is tried several times.
launch_node() {
    local attempt
    for attempt in 1 2 3; do
        ! try_node "$@" || return 0
        warn "node $1 of the cluster did not start (attempt $attempt): $(grep -E 'ERROR|exception' "$place/node$1/log" | tail -n 5)"
    done
    return 1
}

try_node() {
    local data=$place/node$1 found=() members='' other pid
    [ "${2:-}" != new ] || found=(--wsrep-new-cluster)
    for other in 1 2 3; do
        node_ports "$other"
        [ "$other" = "$1" ] || members+=${members:+,}127.0.0.1:$group
    done
    node_ports "$1"
    # A node that founded the cluster and was killed may found it again only by "new".
    [ "${#found[@]}" = 0 ] || members=''
    exec_as_node_user setsid mariadbd --no-defaults --datadir="$data/d" --tmpdir="$data" --socket="$data/s" --port="$client" \
        --bind-address=127.0.0.1 --skip-name-resolve --lower-case-table-names=1 --character-set-server=utf8mb4 \
        --collation-server=utf8mb4_general_ci --max-allowed-packet=256M --innodb-flush-log-at-trx-commit=0 \
        --binlog-format=ROW --innodb-autoinc-lock-mode=2 --wsrep-on=ON --wsrep-sst-method=rsync \
        --wsrep-provider=/usr/lib/galera/libgalera_smm.so --wsrep-cluster-address="gcomm://$members" \
        --wsrep-node-name="node$1" --wsrep-node-address="127.0.0.1:$group" \
        --wsrep-sst-receive-address="127.0.0.1:$full" \
        --wsrep-provider-options="gmcast.listen_addr=tcp://127.0.0.1:$group;ist.recv_addr=127.0.0.1:$incremental;base_port=$group;gcache.size=64M;pc.recovery=false" \
        "${found[@]}" >>"$data/log" 2>&1 </dev/null 8>&- &
    pid=$!
    for _ in $(seq 600); do
        kill -0 "$pid" 2>/dev/null || break
        if [ "$(node_sql "$1" "SHOW STATUS LIKE 'wsrep_local_state_comment'" | cut -f 2)" = Synced ]; then
            say "$pid" >"$dir/node$1.pid"
            disown "$pid" # no message about its end
            return 0
        fi
        sleep 0.1
    done
    kill -KILL "$pid" 2>/dev/null || true
    return 1
}

make_node() {
    local data=$place/node$1
    mkdir "$data"
    [ "$(id -u)" != 0 ] || chown nobody:nogroup "$data"
    (exec_as_node_user mariadb-install-db --no-defaults --datadir="$data/d" --tmpdir="$data" --skip-test-db \
        --auth-root-authentication-method=normal) >>"$dir/cluster.log" 2>&1 && return 0
    warn "the data of node $1 of the cluster could not be made: $(grep ERROR "$dir/cluster.log")"
    return 1
}

start_cluster() {
    local node ports client group incremental full
    : >"$dir/cluster.log"
    transfer_scripts
    read -ra ports < <(free_ports 12) # taken at once, so that two nodes never choose the same one
    for node in 1 2 3; do
        make_node "$node" || return 1
        say "${ports[*]:(node - 1) * 4:4}" >"$place/node$node/ports"
    done
    launch_node 1 new || return 1
    if ! node_sql 1 "CREATE USER dax@'127.0.0.1' IDENTIFIED BY '$password'; GRANT ALL ON *.* TO dax@'127.0.0.1';"; then
        warn "the first node of the cluster did not accept its administrator"
        return 1
    fi
    for node in 2 3; do launch_node "$node" || return 1; done
    for node in 1 2 3; do
        node_ports "$node"
        say "export DAX_TEST_CLUSTER$node='Driver={MariaDB Unicode};Server=127.0.0.1;Port=$client;UID=dax;PWD=$password'"
    done
}

stop_cluster() {
    local node
    for node in 1 2 3; do end_process "$dir/node$node.pid" KILL; done
}

# Runs the commands from the input of "own --cluster", until it ends.
run_cluster_commands() {
    local command node result
    while read -r command node; do
        result="done"
        case $command in
        kill) end_process "$dir/node$node.pid" KILL ;;
        start) launch_node "$node" || result=failed ;;
        bootstrap) # it accepts statements a moment later
            node_sql "$node" "SET GLOBAL wsrep_provider_options='pc.bootstrap=YES'" && await_ready "$node" || result=failed
            ;;
        *) fail "unknown command: $command" ;;
        esac
        say "$result"
    done
}
