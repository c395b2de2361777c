"""Publications, compared with the module figure by figure."""
