# A part of ./dev: install_packages PACKAGE... installs the Debian packages that are missing, as root or through sudo.

as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi; }

missing() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null)" = 'ii ' ] || echo "$package"
  done
}

install_packages() {
  local lacking
  mapfile -t lacking < <(missing "$@")
  [ ${#lacking[@]} -gt 0 ] || return 0
  say "installing ${lacking[*]}"
  if ! dpkg --print-foreign-architectures | grep -qx i386; then as_root dpkg --add-architecture i386; fi
  export DEBIAN_FRONTEND=noninteractive
  as_root apt-get update -qq || true
  as_root apt-get install -y -qq --no-install-recommends "${lacking[@]}" || install_from_base_suite "${lacking[@]}"
}

# A package's 64-bit and 32-bit forms install side by side only in the same version. Where an index of the update or
# security suites is missing for one of them, the base suite alone still has them in step.
install_from_base_suite() {
  say "trying again with the base suite alone"
  local work options
  work=$(mktemp -d)
  mkdir -p "$work/lists/partial"
  apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT) $(LABEL)' 'Created-By: Packages' |
    awk '$4 == "Debian" && $2 !~ /-/ { print "deb [arch=amd64,i386] " $1 " " $2 " " $3 }' | sort -u > "$work/base.list"
  [ -s "$work/base.list" ] || fail "no base suite of Debian among this machine's package sources"
  chmod -R a+rX "$work"
  options=(-o "Dir::Etc::SourceList=$work/base.list" -o Dir::Etc::SourceParts=/dev/null
    -o "Dir::State::Lists=$work/lists")
  as_root apt-get "${options[@]}" update -qq
  as_root apt-get "${options[@]}" install -y -qq --no-install-recommends "$@"
  as_root rm -rf "$work"
}
