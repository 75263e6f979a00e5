// Keeps a library whole while its room is still empty.
