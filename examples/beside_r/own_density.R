f <- function(t) exp(-t^4 + t)
mass <- integrate(f, -5, 5)$value
m <- integrate(function(t) t * f(t), -5, 5)$value / mass
m; sqrt(integrate(function(t) (t - m)^2 * f(t), -5, 5)$value / mass)
sf <- function(x) integrate(f, x, 5)$value / mass
uniroot(function(x) sf(x) - 0.01, c(-5, 5))$root; sf(2)
set.seed(1); y <- runif(40000, -2, 2); y <- y[runif(40000) * 1.7 < f(y)][1:10000]
svg("own_density.svg"); hist(y, 40, freq = FALSE); curve(f(x) / mass, add = TRUE); dev.off()
