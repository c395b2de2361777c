"""The atlas: all tables as one page to look at."""
