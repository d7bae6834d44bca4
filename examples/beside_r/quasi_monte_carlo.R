library(randtoolbox)                                                       # a package: base R has no such points
f <- function(x) (pi / 2)^5 * apply(sin(pi * x), 1, prod)
estimates <- sapply(1:8, function(k) mean(f(sobol(4096, 5, scrambling = 1, seed = k))))
mean(estimates); sd(estimates) / sqrt(8)
