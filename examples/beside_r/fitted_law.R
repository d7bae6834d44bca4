rain <- read.csv("data/precip.csv")$inches
law <- exp(optim(c(0, 0), function(p) -sum(dgamma(rain, exp(p[1]), scale = exp(p[2]), log = TRUE)))$par); law
ks.test(rain, "pgamma", law[1], scale = law[2])$p.value
pgamma(c(80, 4000), law[1], scale = law[2], lower.tail = FALSE, log.p = TRUE)
svg("fitted_law.svg"); hist(rain, 12, freq = FALSE, xlab = "inches")
curve(dgamma(x, law[1], scale = law[2]), add = TRUE); dev.off()
