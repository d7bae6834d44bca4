# The jobs of docs/performance.md in R.
measure <- function(job, count, run) {
  best <- Inf; total <- 0; runs <- 0
  while (runs < 3 || total < 0.3) {
    seconds <- system.time(run(), gcFirst = FALSE)[["elapsed"]]
    best <- min(best, seconds); total <- total + max(seconds, 1e-3); runs <- runs + 1
  }
  cat(sprintf("%s\tR\t%.6g\n", job, best / count))
}
# Short jobs are repeated inside the measured run: the clock ticks in milliseconds.
repeated <- function(k, run) function() for (i in seq_len(k)) run()

set.seed(1)
large <- rnorm(1e7, 10, 2); medium <- large[1:1e6]
measure("mean of 10^7", 1, function() mean(large))
weights <- abs(rev(large))
measure("weighted mean of 10^7", 1, function() matrixStats::weightedMean(large, weights))
measure("covariance of 10^7", 1, function() cov(large, weights))
measure("moments 2, 3, 4 of 10^6", 1, function() {
  d <- medium - mean(medium); c(mean(d^2), mean(d^3), mean(d^4))
})
measure("median of 10^7", 1, function() median(large))
measure("25 quantiles of 10^7", 1, function() quantile(large, (1:25)/26))
measure("trimmed mean of 10^7", 1, function() mean(large, trim = 0.1))
measure("Shapiro-Wilk, n = 5000", 100, repeated(100, function() shapiro.test(medium[1:5000])))
measure("sort of 10^7", 1, function() sort(large, method = "radix"))
measure("stable argsort of 10^6", 1, function() order(medium, method = "radix"))
measure("ranks of 10^6", 1, function() rank(medium, ties.method = "first"))
numbers <- sample.int(1000L, 1e6, replace = TRUE)
measure("tally of 10^6, 1000 values", 1, function() tabulate(numbers))
levels <- as.numeric(numbers)
measure("tally of 10^6 doubles, 1000 values", 1, function() table(levels))
edges <- seq(-10, 30, length.out = 101)
measure("10^7 into 100 bins", 1, function() hist(large, breaks = edges, plot = FALSE))
measure("moving median, 101 over 10^6", 1, function() runmed(medium, 101, endrule = "keep"))
measure("cumulative sum of 10^7", 1, function() cumsum(large))
measure("filter, 16 taps over 10^6", 1, function() stats::filter(medium, rep(1/16, 16), sides = 1))
measure("filter, 101 taps over 10^6", 1, function() stats::filter(medium, rep(1/101, 101), sides = 1))
measure("density of 10^6 at 4096 points", 1, function() density(medium, bw = 0.1, n = 4096))

n <- 1e6
measure("uniform variates", n, function() runif(n))
measure("normal variates", n, function() rnorm(n))
measure("exponential variates", n, function() rexp(n))
measure("gamma(2.5) variates", n, function() rgamma(n, 2.5))
measure("beta(2, 3) variates", n, function() rbeta(n, 2, 3))
measure("Poisson(10) variates", n, function() rpois(n, 10))
measure("binomial(100, 0.3) variates", n, function() rbinom(n, 100, 0.3))

measure("alias urn of 1000", n, function() sample.int(1000L, n, replace = TRUE, prob = 1:1000))
measure("shuffle of 10^7", 1, function() sample(large))

call <- function(job, from, to, f) {
  x <- from + (to - from) * (seq_len(1e6) - 0.5) / 1e6
  measure(job, 1e6, function() f(x))
}
call("normal probability", -3, 3, pnorm)
call("Student t(5) probability", -3, 3, function(x) pt(x, 5))
call("gamma(2.5) probability", 0, 8, function(x) pgamma(x, 2.5))
call("beta(2, 3) probability", 0, 1, function(x) pbeta(x, 2, 3))
call("F(5, 7) probability", 0, 5, function(x) pf(x, 5, 7))
call("Poisson(10) probability", 0, 25, function(x) ppois(x, 10))
call("binomial(100, 0.3) probability", 10, 50, function(x) pbinom(x, 100, 0.3))
call("normal quantile", 0, 1, qnorm)
call("Student t(5) quantile", 0, 1, function(p) qt(p, 5))
call("gamma(2.5) quantile", 0, 1, function(p) qgamma(p, 2.5))
call("beta(2, 3) quantile", 0, 1, function(p) qbeta(p, 2, 3))

measure("Brent solve, the user's function", 2000,
        repeated(2000, function() uniroot(function(x) x^3 - 2*x - 5, c(2, 3), tol = 4e-16)))
x <- rnorm(1000)
measure("bootstrap, 2000 means of 1000", 1, function() replicate(2000, mean(sample(x, replace = TRUE))))
