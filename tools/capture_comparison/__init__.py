"""Comparisons of collected namespaces with independent decodes of the same machines."""
