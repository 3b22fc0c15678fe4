namespace regscan { int placeholder = 0; }
