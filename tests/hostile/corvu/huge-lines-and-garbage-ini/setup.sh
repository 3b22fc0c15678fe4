mkdir -p /etc/.kelvo/registry
{ head -c 10485760 /dev/zero | tr '\0' k; printf '=v\n[x\n'; printf 'location=/opt/corvu\n'; } > /etc/.kelvo/registry/Corvu.dat
