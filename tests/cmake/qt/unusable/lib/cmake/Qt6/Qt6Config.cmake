set(Qt6_FOUND FALSE)
set(Qt6_NOT_FOUND_MESSAGE "its tools for this machine are missing")
